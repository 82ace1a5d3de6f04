#include "SonaroHost/Picture/TimelineDrawing.h"

#include "BitmapCanvas.h"
#include "SonaroHost/Base/HostError.h"
#include "SvgCanvas.h"
#include "TimelinePainter.h"
#include "Waveform/WaveformPicture.h"

#include <algorithm>

namespace SonaroHost
{

unsigned ChoosePictureHeight(TimelinePicture const& inPicture, TimelineStyle const& inStyle)
{
	std::size_t const lanes = inPicture.mLanes.size();
	unsigned const height =
		inStyle.mHeight.value_or(std::min(TimelineLayout::FindGoodHeight(inPicture), kMaxPictureSize));
	if (height < lanes || height > kMaxPictureSize)
	{
		Refuse("a picture of " + std::to_string(lanes) + " bands must be " + std::to_string(lanes) + " to " +
			   std::to_string(kMaxPictureSize) + " pixels high, not " + std::to_string(height));
	}
	return height;
}

std::string DrawTimelineSvg(TimelinePicture const& inPicture, TimelineStyle const& inStyle)
{
	unsigned const height = ChoosePictureHeight(inPicture, inStyle);
	TimelineLayout const layout(inPicture, inStyle.mWidth, height);
	SvgCanvas canvas(inStyle.mWidth, height, inPicture.mTitle);
	TimelinePainter(inPicture, inStyle, layout, canvas).Paint();
	return canvas.Take();
}

std::string DrawTimelinePng(TimelinePicture const& inPicture, TimelineStyle const& inStyle)
{
	unsigned const height = ChoosePictureHeight(inPicture, inStyle);
	CheckBitmapSize(inStyle.mWidth, height);
	TimelineLayout const layout(inPicture, inStyle.mWidth, height);
	BitmapCanvas canvas(inStyle.mWidth, height);
	TimelinePainter(inPicture, inStyle, layout, canvas).Paint();
	return canvas.MakePng();
}

} // namespace SonaroHost
