#include "Canvas.h"

#include "SonaroHost/Base/PrintableText.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <utility>

namespace SonaroHost
{

namespace
{

// Sums of texts, which g++ 12 warns of without cause where one of them is a literal.
template <class... Texts>
std::string JoinTexts(Texts const&... inTexts)
{
	std::string text;
	((text += inTexts), ...);
	return text;
}

// With two digits at most, whatever the locale.
std::string FormatPixels(double inNumber)
{
	std::array<char, 64> text{};
	auto const result =
		std::to_chars(text.data(), text.data() + text.size(), inNumber, std::chars_format::fixed, 2);
	std::string number(text.data(), result.ptr);
	number.erase(number.find_last_not_of('0') + 1);
	if (number.back() == '.')
	{
		number.pop_back();
	}
	return number == "-0" ? "0" : number;
}

// The mark of FitText that keeps an ellipsis on its side is the one control that a text may have.
std::string EscapeFitted(std::string const& inText)
{
	constexpr std::string_view kEllipsisMark = "\u200f";
	bool const hasMark = inText.ends_with(kEllipsisMark);
	return JoinTexts(EscapeMarkup(inText.substr(0, inText.size() - (hasMark ? kEllipsisMark.size() : 0))),
		std::string(hasMark ? kEllipsisMark : std::string_view()));
}

// NAME="VALUE" after a space.
std::string MakeAttribute(std::string_view inName, std::string_view inValue)
{
	std::string text(1, ' ');
	text += inName;
	text += "=\"";
	text += inValue;
	text += '"';
	return text;
}

std::string MakeAttribute(std::string_view inName, double inValue)
{
	return MakeAttribute(inName, FormatPixels(inValue));
}

std::string MakeColour(std::string const& inName, Colour const& inColour)
{
	constexpr double kOpaque = 255.0;
	std::array<char, 8> text{};
	std::snprintf(text.data(), text.size(), "#%02x%02x%02x", inColour.mRed, inColour.mGreen, inColour.mBlue);
	return JoinTexts(MakeAttribute(inName, text.data()),
		(inColour.mAlpha == 255 ? std::string()
								: MakeAttribute(inName + "-opacity", inColour.mAlpha / kOpaque)));
}

std::string MakeBox(Box const& inBox)
{
	return JoinTexts(MakeAttribute("x", inBox.mX), MakeAttribute("y", inBox.mY),
		MakeAttribute("width", inBox.mWidth), MakeAttribute("height", inBox.mHeight));
}

std::string MakeStroke(Stroke const& inStroke)
{
	return JoinTexts(" fill=\"none\"", MakeColour("stroke", inStroke.mColour),
		(inStroke.mWidth == 1.0 ? "" : MakeAttribute("stroke-width", inStroke.mWidth)),
		(inStroke.mIsDashed ? " stroke-dasharray=\"4 3\"" : ""));
}

void Append(char inLetter, double inPixels, std::string& ioPath)
{
	ioPath += inLetter;
	ioPath += FormatPixels(inPixels);
}

std::string MakePoints(std::vector<Point> const& inPoints)
{
	std::string points;
	for (Point const& point : inPoints)
	{
		points += points.empty() ? "" : " ";
		points += FormatPixels(point.mX);
		Append(',', point.mY, points);
	}
	return MakeAttribute("points", points);
}

// The outline of pixels that follow each other: along their tops and back along their bottoms.
std::string MakeOutline(
	double inX, std::vector<WaveformExtent> const& inExtents, std::size_t inFirst, std::size_t inEnd)
{
	std::string path;
	Append('M', inX + static_cast<double>(inFirst), path);
	Append(' ', inExtents[inFirst].mTop, path);
	for (std::size_t i = inFirst + 1; i <= inEnd; ++i)
	{
		if (i == inEnd || inExtents[i].mTop != inExtents[i - 1].mTop)
		{
			Append('H', inX + static_cast<double>(i), path);
			Append('V', i == inEnd ? inExtents[i - 1].mBottom : inExtents[i].mTop, path);
		}
	}
	for (std::size_t i = inEnd - 1; i > inFirst; --i)
	{
		if (inExtents[i].mBottom != inExtents[i - 1].mBottom)
		{
			Append('H', inX + static_cast<double>(i), path);
			Append('V', inExtents[i - 1].mBottom, path);
		}
	}
	Append('H', inX + static_cast<double>(inFirst), path);
	path += 'Z';
	return path;
}

class SvgCanvas final : public Canvas
{
public:
	SvgCanvas(unsigned inWidth, unsigned inHeight, std::string_view inTitle)
	{
		std::string const width = std::to_string(inWidth);
		std::string const height = std::to_string(inHeight);
		mText = JoinTexts("<svg xmlns=\"http://www.w3.org/2000/svg\"", MakeAttribute("width", width),
			MakeAttribute("height", height), MakeAttribute("viewBox", "0 0 " + width + " " + height),
			" font-family=\"sans-serif\" role=\"img\">\n");
		AddTitle(inTitle);
	}

	std::string Take() override
	{
		mText += "</svg>\n";
		return std::move(mText);
	}

	void BeginGroup(std::string_view inPart, std::string_view inTitle) override
	{
		mText += JoinTexts("<g", MakeAttribute("data-part", inPart), ">\n");
		AddTitle(inTitle);
	}

	void EndGroup() override { mText += "</g>\n"; }

	void Fill(Box const& inBox, Colour const& inColour) override
	{
		if (inColour.mAlpha != 0)
		{
			mText += JoinTexts("<rect", MakeBox(inBox), MakeColour("fill", inColour), "/>\n");
		}
	}

	void Frame(Box const& inBox, Stroke const& inStroke) override
	{
		double const inset = inStroke.mWidth / 2.0;
		Box const middle{inBox.mX + inset, inBox.mY + inset, inBox.mWidth - inStroke.mWidth,
			inBox.mHeight - inStroke.mWidth};
		mText += JoinTexts("<rect", MakeBox(middle), MakeStroke(inStroke), "/>\n");
	}

	void DrawLine(std::vector<Point> const& inPoints, Stroke const& inStroke) override
	{
		mText += JoinTexts("<polyline", MakePoints(inPoints), MakeStroke(inStroke), "/>\n");
	}

	void FillShape(std::vector<Point> const& inPoints, Colour const& inColour) override
	{
		mText += JoinTexts("<polygon", MakePoints(inPoints), MakeColour("fill", inColour), "/>\n");
	}

	void FillExtents(
		double inX, std::vector<WaveformExtent> const& inExtents, Colour const& inColour) override
	{
		std::string path;
		for (std::size_t first = 0; first < inExtents.size();)
		{
			std::size_t end = first + 1;
			if (!inExtents[first].IsEmpty())
			{
				while (end < inExtents.size() && !inExtents[end].IsEmpty())
				{
					++end;
				}
				path += MakeOutline(inX, inExtents, first, end);
			}
			first = end;
		}
		if (!path.empty())
		{
			mText += JoinTexts("<path", MakeAttribute("d", path), MakeColour("fill", inColour), "/>\n");
		}
	}

	void Write(std::string const& inText, Box const& inBox, Lettering const& inLettering) override
	{
		// From the middle of small letters and capitals down to their line.
		constexpr double kMiddleToBaseline = 0.35;
		if (inText.empty())
		{
			return;
		}
		// A picture within the picture cuts off what is beyond it.
		mText += JoinTexts("<svg", MakeBox(inBox), "><text x=\"0\"",
			MakeAttribute("y", inBox.mHeight / 2.0 + kMiddleToBaseline * inLettering.mSize),
			MakeAttribute("font-size", inLettering.mSize), MakeColour("fill", inLettering.mColour), ">",
			EscapeFitted(inText), "</text></svg>\n");
	}

private:
	void AddTitle(std::string_view inTitle)
	{
		if (!inTitle.empty())
		{
			mText += "<title>";
			mText += EscapeMarkup(inTitle);
			mText += "</title>\n";
		}
	}

	std::string mText;
};

} // namespace

std::unique_ptr<Canvas> MakeSvgCanvas(unsigned inWidth, unsigned inHeight, std::string_view inTitle)
{
	return std::make_unique<SvgCanvas>(inWidth, inHeight, inTitle);
}

} // namespace SonaroHost
