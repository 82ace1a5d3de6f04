#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"

namespace SN
{

void AudioTrackRenderableItemMixin::Init(TickTime const& inStartTime, TickTime const& inEndTime,
	TickTime const& inTrackItemStartTime, FrameRate const& inFrameRate)
{
	// Copies first: a caller may hand in this item's own times.
	TickTime start = inStartTime;
	TickTime end = inEndTime;
	TickTime trackItemStart = inTrackItemStartTime;
	mStartTime = start.AlignToFrame(inFrameRate);
	mEndTime = end.AlignToFrame(inFrameRate);
	mTrackItemStartTime = trackItemStart.AlignToFrame(inFrameRate);
}

void AudioTrackRenderableItemMixin::CopyTimesFrom(AudioTrackRenderableItemMixin const& inOther)
{
	mStartTime = inOther.mStartTime;
	mTrackItemStartTime = inOther.mTrackItemStartTime;
	mEndTime = inOther.mEndTime;
}

} // namespace SN
