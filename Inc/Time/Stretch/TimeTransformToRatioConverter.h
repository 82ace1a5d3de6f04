#pragma once

#include "Sonaro/Types.h"
#include "Vexilon/ITimeTransform.h"

namespace SN
{

// Turns a curve of time against time into a ratio for each block: its duration by what the source advances in it,
// below 1 where the source is the faster one.
//
// Limits  The source advances by no less than the lowest and no more than the highest limit times the duration; what it
//         lacks then is caught up with in the blocks that follow.
// Rest    A curve that stands still or goes back keeps the ratio, and the source does not go back.
class TimeTransformToRatioConverter
{
public:
	// The transform is not empty.
	TimeTransformToRatioConverter(
		InterfaceRef<VX::ITimeTransform> const& inTimeTransform, float inMinRatio, float inMaxRatio);

	void Seek(TickTime const& inTime);
	// The ratio of the next block.
	float GetRatio(TickTime const& inDuration);

private:
	InterfaceRef<VX::ITimeTransform> mTimeTransform;
	TickTime mCurrentTime;
	// What the last ratio has reached in the source.
	TickTime mSourceTime;
	float mRatio = 1.0f;
	float mMinRatio;
	float mMaxRatio;
};

} // namespace SN
