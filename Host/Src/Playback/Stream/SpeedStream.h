#pragma once

#include "PlayStream.h"
#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Media/RateConverter.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace SonaroHost::Playback
{

// A way of playing: how fast, and in which direction.
struct PlaySpeed
{
	// Throws a HostError unless the speed is from -4 to 4 and its magnitude is 0.01 or more.
	static PlaySpeed Make(double inSpeed);

	bool IsReverse() const { return mSpeed < 0.0; }

	double mSpeed = 1.0;
	// Its magnitude, exactly.
	Ratio mStep = Ratio(1);
	// Null at 1, where frames are played as they are.
	std::shared_ptr<RateConverter const> mConverter;
};

// A stream at any speed. At other speeds than 1 and -1 each frame is computed from its exact place among the stream's
// frames, pitch following: the same frames as those of an item at that speed, also where a loop jumps.
//
// Threads  As PlayStream.
class SpeedStream
{
public:
	// inStream outlives it. Blocks are those of its graph.
	SpeedStream(PlayStream& ioStream, unsigned inChannels, unsigned inBlockFrames);

	// From a place of the programme on.
	void Begin(PlayOrder const& inOrder, std::int64_t inPlace, PlaySpeed const& inSpeed);
	// Goes round in another loop from here on; none with its ends at the same place.
	void SetLoop(std::int64_t inFirst, std::int64_t inEnd);
	// Whether so many frames, at most a block, can be rendered.
	bool IsReady(std::int64_t inFrames) const;
	void Render(dsp::AudioBuffer& ioBuffer) SONARO_NONBLOCKING;
	// Takes back what was rendered last, and has its media read again: the same frames come next. False where that cannot
	// be, see PlayStream.
	bool TakeBackLast();

	// The place that is played next.
	std::int64_t GetPlace() const;
	// How many frames are left until the end of the programme in the direction of playing; in a loop none is the last.
	std::int64_t CountLeft() const;
	// The same until the place jumps in a loop, where it does.
	std::int64_t CountToJump() const;
	PlaySpeed const& GetSpeed() const { return mSpeed; }

private:
	// The frames of the stream that were passed since it began, and how many of the output pass so many.
	std::int64_t CountPassed() const { return (Ratio(mOutputs) * mSpeed.mStep).Floor(); }
	std::int64_t CountOutputs(std::int64_t inFrames) const;
	void ReadUpTo(std::int64_t inEnd);
	void Keep(std::int64_t inFirst);
	void Append(dsp::AudioBuffer const& inBlock);

	PlayStream& mStream;
	PlaySpeed mSpeed;
	unsigned mBlockFrames;
	// A place, and the frames that were passed when it was there.
	std::int64_t mBegin = 0;
	std::int64_t mPassedBefore = 0;
	std::int64_t mOutputs = 0;
	// What was read of the stream and may be needed: frames from mFirst to mEnd, counted from the place where it began,
	// channel after channel with room for mCapacity each.
	std::vector<float> mWindow;
	std::int64_t mCapacity = 0;
	std::int64_t mFirst = 0;
	std::int64_t mEnd = 0;
	// Before what was rendered last.
	std::int64_t mEndBefore = 0;
	std::int64_t mOutputsBefore = 0;
	dsp::AudioBuffer mScratch;
	std::vector<SampleConverter::Channel> mChannels;
};

} // namespace SonaroHost::Playback
