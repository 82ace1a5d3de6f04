#include "SonaroHost/Engine/OfflineRender.h"

#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SonaroHost
{

namespace
{

// The effects below a graph run between the two calls.
class RunningFilters
{
public:
	explicit RunningFilters(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph)
		: mGraph(inGraph)
	{
		mGraph->InitializeAudioFilters();
	}
	~RunningFilters() { mGraph->ShutdownAudioFilters(); }
	RunningFilters(RunningFilters const&) = delete;
	RunningFilters& operator=(RunningFilters const&) = delete;

private:
	SN::InterfaceRef<SN::IAudioGenerator> mGraph;
};

} // namespace

bool RenderOffline(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph, OfflineRange const& inRange,
	BlockSink const& inSink, std::stop_token const& inStop)
{
	bool const isReverse = inRange.mDirection == RenderDirection::kReverse;
	auto const getCount = [&](std::int64_t inDone)
	{ return std::min<std::int64_t>(inRange.mBlockFrames, inRange.mFrames - inDone); };
	// In either direction the time of a block is its lowest.
	auto const getTime = [&](std::int64_t inDone)
	{
		std::int64_t const frame = isReverse ? inRange.mFrames - inDone - getCount(inDone) : inDone;
		return SN::TickTime(inRange.mFirstFrame + frame, inRange.mFrameRate);
	};

	dsp::AudioBuffer block(inRange.mChannels, inRange.mBlockFrames);
	RunningFilters const filters(inGraph);
	inGraph->Preroll(getTime(0), isReverse);
	for (std::int64_t done = 0, count = 0; done < inRange.mFrames; done += count)
	{
		if (inStop.stop_requested())
		{
			return false;
		}
		count = getCount(done);
		block.SetUseSize(static_cast<unsigned>(count));
		SN::TickTime const time = getTime(done);
		inGraph->GetAudioData(time, block, isReverse);
		inSink(block, time);
	}
	return true;
}

} // namespace SonaroHost
