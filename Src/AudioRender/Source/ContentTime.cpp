#include "AudioRender/Source/ContentTime.h"

namespace SN
{

namespace
{

double GetScale(FrameRate const& inFrameRate, FrameRate const& inMediaFrameRate)
{
	return inMediaFrameRate == inFrameRate
			   ? 1.0
			   : inMediaFrameRate.GetSamplesPerSecond() / inFrameRate.GetSamplesPerSecond();
}

} // namespace

ContentTime::ContentTime(FrameRate const& inFrameRate, FrameRate const& inMediaFrameRate, bool inHasOffset,
	TickTime const& inOffset)
	: mScale(GetScale(inFrameRate, inMediaFrameRate)),
	  mHasOffset(inHasOffset),
	  mOffset(inOffset)
{
}

} // namespace SN
