#pragma once

#include "RulerTicks.h"
#include "SonaroHost/Picture/PictureColours.h"
#include "SonaroHost/Picture/TimelineStyle.h"
#include "TimelineLayout.h"

#include <cstddef>
#include <string>
#include <vector>

namespace SonaroHost
{

// Draws a timeline on a canvas. All outlive this object.
class TimelinePainter
{
public:
	TimelinePainter(TimelinePicture const& inPicture, TimelineStyle const& inStyle,
		TimelineLayout const& inLayout, Canvas& ioCanvas);

	void Paint();

private:
	void PaintRuler();
	void PaintMarkers();
	// inEnd: where the next one begins, in pixels.
	void PaintFlag(TimelinePicture::Marker const& inMarker, double inEnd);
	void PaintLane(std::size_t inLane);
	void PaintName(std::size_t inLane);
	void PaintBlockGrounds(std::size_t inLane);
	void PaintWaves(std::size_t inLane);
	void PaintBlock(TimelinePicture::Block const& inBlock, Box const& inBox, double inStripHeight);
	void PaintFade(TimelinePicture::Fade const& inFade, Box const& inWaves);
	// A marker's line, over its lane or all of them.
	void PaintMarkerLine(TimelinePicture::Marker const& inMarker, Box const& inBox);

	// Where blocks stand; empty boxes for those that fall into the pixel of another one.
	std::vector<Box> FindBoxes(std::size_t inLane) const;
	Colour const& GetBorder(TimelinePicture::Block const& inBlock) const;
	std::string Describe(TimelinePicture::Block const& inBlock) const;
	std::string DescribeTimes(TimelinePicture::Span const& inSpan) const;
	std::string Describe(TimelinePicture::Marker const& inMarker) const;

	TimelinePicture const& mPicture;
	TimelineStyle const& mStyle;
	TimelineLayout const& mLayout;
	PictureColours const& mColours;
	Canvas& mCanvas;
	std::vector<RulerTick> mTicks;
};

} // namespace SonaroHost
