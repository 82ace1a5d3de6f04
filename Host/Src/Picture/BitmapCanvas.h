#pragma once

#include "Canvas.h"
#include "Waveform/CairoHandles.h"

namespace SonaroHost
{

// Draws into a bitmap, with texts in the machine's sans-serif fonts.
class BitmapCanvas final : public Canvas
{
public:
	// Throws a HostError when there is no memory for it.
	BitmapCanvas(unsigned inWidth, unsigned inHeight);

	// The bytes of a PNG file.
	std::string MakePng();

	void BeginGroup(std::string_view, std::string_view) override {}
	void EndGroup() override {}
	void Fill(Box const& inBox, Colour const& inColour) override;
	void Frame(Box const& inBox, Stroke const& inStroke) override;
	void DrawLine(std::vector<Point> const& inPoints, Stroke const& inStroke) override;
	void FillShape(std::vector<Point> const& inPoints, Colour const& inColour) override;
	void FillExtents(
		double inX, std::vector<WaveformExtent> const& inExtents, Colour const& inColour) override;
	void Write(std::string const& inText, Box const& inBox, Lettering const& inLettering) override;

private:
	void SetColour(Colour const& inColour);
	void DrawStroke(Stroke const& inStroke);
	void AddPath(std::vector<Point> const& inPoints);

	Surface mSurface;
	Cairo mCairo;
};

} // namespace SonaroHost
