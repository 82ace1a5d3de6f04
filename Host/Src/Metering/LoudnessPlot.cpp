#include "SonaroHost/Metering/LoudnessPlot.h"

#include "SonaroHost/Base/PrintableText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <utility>

namespace SonaroHost
{

namespace
{

// The room around the curves of a panel, in pixels.
constexpr double kPlotLeft = 52.0;
constexpr double kPlotRight = 16.0;
constexpr double kPlotTop = 54.0;
constexpr double kPlotBottom = 36.0;
// The width of most characters of a title.
constexpr double kPlotTitleCharacter = 8.5;
// The least distance of labels on the axis of time.
constexpr double kTimeLabelDistance = 80.0;

constexpr double kUnitsPerLine = 6.0;
// The scale reaches at least so far, and further up for what is louder.
constexpr double kUnitsShown = 48.0;
constexpr double kUsualPlotTop = 6.0;
constexpr double kLowestPlotTop = -30.0;
constexpr double kMostLines = 12.0;

// Steps of the axis of time, in seconds.
constexpr double kTimeSteps[] = {
	0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 30, 60, 120, 300, 600, 1200, 1800, 3600, 7200, 14400, 28800};

std::string FormatPlotNumber(double inValue)
{
	std::array<char, 32> text{};
	std::snprintf(text.data(), text.size(), "%.1f", inValue);
	return text.data();
}

// "0:05", "1:00:00", and "0.5 s" for steps below a second.
std::string FormatTimeLabel(double inSeconds, double inStep)
{
	std::array<char, 48> text{};
	if (inStep < 1.0)
	{
		std::snprintf(text.data(), text.size(), "%.1f s", inSeconds);
		return text.data();
	}
	long long const seconds = std::llround(inSeconds);
	if (seconds >= 3600)
	{
		std::snprintf(
			text.data(), text.size(), "%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
	}
	else
	{
		std::snprintf(text.data(), text.size(), "%lld:%02lld", seconds / 60, seconds % 60);
	}
	return text.data();
}

std::string MakePlotLine(char const* inClass, double inX1, double inY1, double inX2, double inY2)
{
	return std::string("<line class=\"") + inClass + "\" x1=\"" + FormatPlotNumber(inX1) + "\" y1=\"" +
		   FormatPlotNumber(inY1) + "\" x2=\"" + FormatPlotNumber(inX2) + "\" y2=\"" +
		   FormatPlotNumber(inY2) + "\"/>\n";
}

std::string MakePlotText(char const* inClass, double inX, double inY, std::string const& inText)
{
	return inText.empty()
			   ? ""
			   : std::string("<text class=\"") + inClass + "\" x=\"" + FormatPlotNumber(inX) + "\" y=\"" +
					 FormatPlotNumber(inY) + "\">" + EscapeMarkup(inText) + "</text>\n";
}

// The loudness at the lines on top and at the bottom, and from line to line.
struct LoudnessScale
{
	explicit LoudnessScale(std::vector<PlottedLoudness> const& inPlots)
	{
		double highest = LoudnessReading::kSilent;
		for (PlottedLoudness const& plot : inPlots)
		{
			highest = std::max({highest, plot.mSeries->GetMomentaryMaximum().mLoudness,
				plot.mTarget.value_or(LoudnessReading::kSilent)});
		}
		highest = std::max(highest, kLowestPlotTop);
		mBottom = std::min(mStep * std::ceil(highest / mStep), kUsualPlotTop) - kUnitsShown;
		while (highest - mBottom > mStep * kMostLines)
		{
			mStep *= 2.0;
		}
		mTop = mBottom + mStep * std::ceil((highest - mBottom) / mStep);
	}

	double GetPart(double inLoudness) const { return (mTop - inLoudness) / (mTop - mBottom); }

	double mStep = kUnitsPerLine;
	double mTop;
	double mBottom;
};

// A curve of steps as the data of a path. Where there are many steps for a pixel, it shows the highest and the lowest.
class LoudnessCurve
{
public:
	LoudnessCurve(LoudnessScale const& inScale, double inWidth, double inHeight, std::size_t inSteps)
		: mScale(inScale),
		  mPixelsPerStep(inWidth / static_cast<double>(std::max<std::size_t>(inSteps, 1))),
		  mHeight(inHeight)
	{
	}

	// inStep: counted from 1, at its end.
	void Add(double inStep, double inLoudness)
	{
		double const x = kPlotLeft + inStep * mPixelsPerStep;
		if (mHeld > 0 && std::floor(x) != std::floor(mX))
		{
			Flush();
		}
		bool const isHigher = mHeld == 0 || inLoudness > mHighest;
		bool const isLower = mHeld == 0 || inLoudness < mLowest;
		mHighest = isHigher ? inLoudness : mHighest;
		mLowest = isLower ? inLoudness : mLowest;
		mEndsHigh = isHigher || (mEndsHigh && !isLower);
		mX = x;
		++mHeld;
	}

	std::string Take()
	{
		Flush();
		return std::move(mData);
	}

private:
	void Flush()
	{
		if (mHeld > 0)
		{
			if (mHeld > 1 && mHighest != mLowest)
			{
				AddPoint(mEndsHigh ? mLowest : mHighest);
			}
			AddPoint(mHeld > 1 && !mEndsHigh ? mLowest : mHighest);
		}
		mHeld = 0;
	}

	void AddPoint(double inLoudness)
	{
		// Written so that silence fails it.
		if (!(inLoudness >= mScale.mBottom))
		{
			mIsDown = false;
			return;
		}
		double const y = kPlotTop + mHeight * mScale.GetPart(inLoudness);
		mData.append(mIsDown ? "L" : "M")
			.append(FormatPlotNumber(mX))
			.append(" ")
			.append(FormatPlotNumber(y));
		mIsDown = true;
	}

	LoudnessScale const& mScale;
	double mPixelsPerStep;
	double mHeight;
	std::string mData;
	bool mIsDown = false;
	// What the pixel has so far.
	std::size_t mHeld = 0;
	double mX = 0.0;
	double mHighest = 0.0;
	double mLowest = 0.0;
	bool mEndsHigh = false;
};

// One programme.
class LoudnessPanel
{
public:
	LoudnessPanel(PlottedLoudness const& inPlot, LoudnessScale const& inScale, PlotSize const& inSize)
		: mPlot(inPlot),
		  mSeries(*inPlot.mSeries),
		  mScale(inScale),
		  mWidth(inSize.mWidth - kPlotLeft - kPlotRight),
		  mHeight(inSize.mHeight - kPlotTop - kPlotBottom)
	{
	}

	std::string Draw() const
	{
		std::string const title = ShortenMiddle(
			MakePrintable(mPlot.mTitle), static_cast<std::size_t>(mWidth / kPlotTitleCharacter));
		return MakePlotText("plot-title", kPlotLeft, 18.0, title) + DrawLegend() + DrawLevels() +
			   DrawTimes() + DrawCurves() +
			   MakePlotText("plot-note", kPlotLeft + mWidth / 2.0, kPlotTop + mHeight / 2.0, mPlot.mNote);
	}

private:
	double GetY(double inLoudness) const { return kPlotTop + mHeight * mScale.GetPart(inLoudness); }
	double GetSeconds() const
	{
		return static_cast<double>(mSeries.GetNumSteps()) * mSeries.GetStepSeconds();
	}

	std::string DrawLegend() const
	{
		constexpr double kSample = 22.0;
		constexpr double kY = 38.0;
		struct Entry
		{
			char const* mClass;
			char const* mText;
			double mAdvance;
		};
		constexpr Entry kEntries[] = {{"plot-momentary", "momentary", 110.0},
			{"plot-short-term", "short-term", 108.0}, {"plot-integrated", "integrated", 106.0},
			{"plot-target", "target", 0.0}};
		std::string text;
		double x = kPlotLeft;
		for (std::size_t i = 0; i < std::size(kEntries) - (mPlot.mTarget ? 0 : 1); ++i)
		{
			text += MakePlotLine(kEntries[i].mClass, x, kY - 4.0, x + kSample, kY - 4.0) +
					MakePlotText("plot-label", x + kSample + 6.0, kY, kEntries[i].mText);
			x += kEntries[i].mAdvance;
		}
		return text;
	}

	std::string DrawLevels() const
	{
		std::string text = MakePlotText("plot-unit", kPlotLeft - 8.0, kPlotTop - 16.0, "LUFS");
		for (double loudness = mScale.mTop; loudness >= mScale.mBottom; loudness -= mScale.mStep)
		{
			double const y = GetY(loudness);
			text +=
				MakePlotLine("plot-line", kPlotLeft, y, kPlotLeft + mWidth, y) +
				MakePlotText("plot-level", kPlotLeft - 8.0, y + 4.0, std::to_string(std::lround(loudness)));
		}
		return text;
	}

	std::string DrawTimes() const
	{
		double const seconds = GetSeconds();
		double const least = seconds * kTimeLabelDistance / mWidth;
		auto const* const found = std::find_if(std::begin(kTimeSteps), std::end(kTimeSteps) - 1,
			[least](double inStep) { return inStep >= least; });
		std::string text;
		for (double time = 0.0; time <= seconds + *found / 1000.0; time += *found)
		{
			double const x = kPlotLeft + (seconds > 0.0 ? mWidth * time / seconds : 0.0);
			text += MakePlotLine("plot-line", x, kPlotTop, x, kPlotTop + mHeight) +
					MakePlotText("plot-time", x, kPlotTop + mHeight + 18.0, FormatTimeLabel(time, *found));
		}
		return text;
	}

	std::string DrawCurves() const
	{
		std::size_t const steps = mSeries.GetNumSteps();
		LoudnessCurve momentary(mScale, mWidth, mHeight, steps);
		LoudnessCurve shortTerm(mScale, mWidth, mHeight, steps);
		for (std::size_t step = 0; step < steps; ++step)
		{
			momentary.Add(static_cast<double>(step + 1), mSeries.GetMomentary(step));
			shortTerm.Add(static_cast<double>(step + 1), mSeries.GetShortTerm(step));
		}
		LoudnessCurve integrated(mScale, mWidth, mHeight, steps);
		auto const stride =
			std::max<std::size_t>(1, static_cast<std::size_t>(static_cast<double>(steps) / mWidth));
		std::vector<double> const list = mSeries.ListIntegrated(stride);
		for (std::size_t i = 0; i < list.size(); ++i)
		{
			integrated.Add(static_cast<double>(std::min((i + 1) * stride, steps)), list[i]);
		}
		std::string text;
		if (mPlot.mTarget && *mPlot.mTarget >= mScale.mBottom)
		{
			double const y = GetY(*mPlot.mTarget);
			text += MakePlotLine("plot-target", kPlotLeft, y, kPlotLeft + mWidth, y);
		}
		return text + MakeCurvePath("plot-momentary", momentary.Take()) +
			   MakeCurvePath("plot-short-term", shortTerm.Take()) +
			   MakeCurvePath("plot-integrated", integrated.Take());
	}

	static std::string MakeCurvePath(char const* inClass, std::string const& inData)
	{
		return inData.empty() ? "" : std::string("<path class=\"") + inClass + "\" d=\"" + inData + "\"/>\n";
	}

	PlottedLoudness const& mPlot;
	LoudnessSeries const& mSeries;
	LoudnessScale const& mScale;
	double mWidth;
	double mHeight;
};

constexpr char const* kLightPlotColours =
	"--paper:#ffffff;--ink:#1c2128;--soft:#57606a;--line:#d5dae0;--momentary:#7d8590;--short-term:#0757ba;"
	"--integrated:#b3261e;--target:#116329";
constexpr char const* kDarkPlotColours =
	"--paper:#0f1318;--ink:#e6edf3;--soft:#a3adb8;--line:#2f363f;--momentary:#858f9a;--short-term:#6cb6ff;"
	"--integrated:#ff8a80;--target:#56d364";

// A property of CSS in one of the colours. What knows no variables, as many programs that show SVG, takes the light one.
std::string GetPlotColour(std::string const& inProperty, std::string const& inName)
{
	std::string const name = "--" + inName + ":";
	std::string_view const colours = kLightPlotColours;
	constexpr std::size_t kLength = std::string_view("#000000").size();
	std::string const light(colours.substr(colours.find(name) + name.size(), kLength));
	return inProperty + ":" + light + ";" + inProperty + ":var(--" + inName + "," + light + ")";
}

// What a plot of one programme shows, in words.
std::string DescribePlot(PlottedLoudness const& inPlot)
{
	LoudnessSeries const& series = *inPlot.mSeries;
	auto const range = series.GetRange();
	return ": " + inPlot.mTitle + ". Momentary at most " +
		   FormatPlotNumber(series.GetMomentaryMaximum().mLoudness) + " LUFS, short-term at most " +
		   FormatPlotNumber(series.GetShortTermMaximum().mLoudness) + " LUFS" +
		   (range ? ", loudness range " + FormatPlotNumber(*range) + " LU" : "") +
		   (inPlot.mTarget ? ", target " + FormatPlotNumber(*inPlot.mTarget) + " LUFS" : "");
}

} // namespace

std::string GetPlotColours()
{
	return std::string(":root{color-scheme:light dark;")
		.append(kLightPlotColours)
		.append("}\n@media screen and (prefers-color-scheme:dark){:root{")
		.append(kDarkPlotColours)
		.append("}}\n");
}

std::string GetPlotStyle()
{
	auto const colour = [](char const* inProperty, char const* inName)
	{ return GetPlotColour(inProperty, inName); };
	return ".plot text{font:13px system-ui,sans-serif;" + colour("fill", "soft") +
		   "}\n"
		   ".plot .plot-title{font-size:15px;font-weight:600;" +
		   colour("fill", "ink") +
		   "}\n"
		   ".plot .plot-level,.plot .plot-unit{text-anchor:end}\n"
		   ".plot .plot-time,.plot .plot-note{text-anchor:middle}\n"
		   ".plot .plot-note{paint-order:stroke;stroke-width:6px;" +
		   colour("stroke", "paper") +
		   "}\n"
		   ".plot line,.plot path{fill:none;stroke-width:1;stroke-linejoin:round}\n"
		   ".plot .plot-line{" +
		   colour("stroke", "line") + "}\n.plot .plot-momentary{" + colour("stroke", "momentary") +
		   "}\n.plot .plot-short-term{stroke-width:2;" + colour("stroke", "short-term") +
		   "}\n.plot .plot-integrated{stroke-width:2;stroke-dasharray:8 4;" + colour("stroke", "integrated") +
		   "}\n.plot .plot-target{stroke-width:2;stroke-dasharray:2 4;" + colour("stroke", "target") + "}\n";
}

std::string DrawLoudness(std::vector<PlottedLoudness> const& inPlots, PlotPlace inPlace, PlotSize inSize)
{
	LoudnessScale const scale(inPlots);
	std::string const width = std::to_string(inSize.mWidth);
	std::string const height = std::to_string(inSize.mHeight * inPlots.size());
	std::string const title =
		"Loudness over time" + (inPlots.size() == 1 ? EscapeMarkup(DescribePlot(inPlots.front())) : "");
	std::string text = "<svg class=\"plot\" xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + width +
					   " " + height + "\" role=\"img\" aria-label=\"" + title + "\"";
	if (inPlace == PlotPlace::kFile)
	{
		text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + text + " width=\"" + width + "\" height=\"" +
			   height + "\"><style>\n" + GetPlotColours() + GetPlotStyle() +
			   "</style>\n<rect width=\"100%\" height=\"100%\" style=\"" + GetPlotColour("fill", "paper") +
			   "\"/>\n";
	}
	else
	{
		text += ">\n";
	}
	for (std::size_t i = 0; i < inPlots.size(); ++i)
	{
		text += "<g transform=\"translate(0 " + std::to_string(i * inSize.mHeight) + ")\">\n" +
				LoudnessPanel(inPlots[i], scale, inSize).Draw() + "</g>\n";
	}
	return text + "</svg>\n";
}

} // namespace SonaroHost
