#pragma once

#include "Sonaro/IAudioTrackRenderableItem.h"

namespace SN
{

// The three times of an item, kept on frame boundaries of the rate that they were last given: the base
// of every node that can stand on a track. All zero until Init.
class AudioTrackRenderableItemMixin : public IAudioTrackRenderableItem
{
public:
	void Init(TickTime const& inStartTime, TickTime const& inEndTime, TickTime const& inTrackItemStartTime,
		FrameRate const& inFrameRate) override;
	TickTime GetStartTime() SONARO_NONBLOCKING override { return mStartTime; }
	TickTime GetEndTime() SONARO_NONBLOCKING override { return mEndTime; }
	TickTime GetTrackItemStartTime() SONARO_NONBLOCKING override { return mTrackItemStartTime; }

protected:
	void CopyTimesFrom(AudioTrackRenderableItemMixin const& inOther);

private:
	TickTime mStartTime;
	TickTime mTrackItemStartTime;
	TickTime mEndTime;
};

} // namespace SN
