#pragma once

#include "Canvas.h"

namespace SonaroHost
{

// Draws into the text of an SVG document.
class SvgCanvas final : public Canvas
{
public:
	SvgCanvas(unsigned inWidth, unsigned inHeight, std::string_view inTitle);

	// Ends the document.
	std::string Take();

	void BeginGroup(std::string_view inPart, std::string_view inTitle) override;
	void EndGroup() override;
	void Fill(Box const& inBox, Colour const& inColour) override;
	void Frame(Box const& inBox, Stroke const& inStroke) override;
	void DrawLine(std::vector<Point> const& inPoints, Stroke const& inStroke) override;
	void FillShape(std::vector<Point> const& inPoints, Colour const& inColour) override;
	void FillExtents(
		double inX, std::vector<WaveformExtent> const& inExtents, Colour const& inColour) override;
	void Write(std::string const& inText, Box const& inBox, Lettering const& inLettering) override;

private:
	void AddTitle(std::string_view inTitle);

	std::string mText;
};

} // namespace SonaroHost
