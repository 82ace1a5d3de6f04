#pragma once

#include "SonaroHost/Waveform/WaveformStyle.h"
#include "Waveform/WaveformExtents.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace SonaroHost
{

// All in pixels from the upper left corner.
struct Box
{
	double GetRight() const { return mX + mWidth; }
	double GetBottom() const { return mY + mHeight; }

	double mX = 0.0;
	double mY = 0.0;
	double mWidth = 0.0;
	double mHeight = 0.0;
};

struct Point
{
	double mX = 0.0;
	double mY = 0.0;
};

struct Stroke
{
	Colour mColour;
	double mWidth = 1.0;
	bool mIsDashed = false;
};

// What a text looks like; it stands in the middle of its box's height and begins at its left.
struct Lettering
{
	Colour mColour;
	double mSize = 12.0;
};

// Where a picture is drawn, one thing over the other.
class Canvas
{
public:
	Canvas() = default;
	Canvas(Canvas const&) = delete;
	Canvas& operator=(Canvas const&) = delete;
	virtual ~Canvas() = default;

	// What is drawn until the group ends belongs together. inPart: what it is, for programs, without quotes. inTitle: what is
	// shown of it where one points, or empty.
	virtual void BeginGroup(std::string_view inPart, std::string_view inTitle) = 0;
	virtual void EndGroup() = 0;

	virtual void Fill(Box const& inBox, Colour const& inColour) = 0;
	// The border lies within the box.
	virtual void Frame(Box const& inBox, Stroke const& inStroke) = 0;
	virtual void DrawLine(std::vector<Point> const& inPoints, Stroke const& inStroke) = 0;
	virtual void FillShape(std::vector<Point> const& inPoints, Colour const& inColour) = 0;
	// Pixel by pixel from inX on.
	virtual void FillExtents(
		double inX, std::vector<WaveformExtent> const& inExtents, Colour const& inColour) = 0;
	// A text that FitText made to fit the box; what is wider all the same is cut off.
	virtual void Write(std::string const& inText, Box const& inBox, Lettering const& inLettering) = 0;

	// The bytes of the file, once all is drawn.
	virtual std::string Take() = 0;
};

// Draws into the text of an SVG document.
std::unique_ptr<Canvas> MakeSvgCanvas(unsigned inWidth, unsigned inHeight, std::string_view inTitle);

// Draws into a bitmap for a PNG file, with texts in the machine's sans-serif fonts. Throws a HostError when there is no
// memory for it.
std::unique_ptr<Canvas> MakeBitmapCanvas(unsigned inWidth, unsigned inHeight);

} // namespace SonaroHost
