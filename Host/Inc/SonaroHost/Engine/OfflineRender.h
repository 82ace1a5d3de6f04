#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/Types.h"

#include <cstdint>
#include <functional>
#include <stop_token>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

enum class RenderDirection
{
	kForward,
	kReverse,
};

// What of a graph is rendered, and how.
struct OfflineRange
{
	// How many frames of mFrameRate.
	std::int64_t mFrames = 0;
	SN::FrameRate mFrameRate;
	// Of the blocks that are pulled: as many as the graph's layout has.
	unsigned mChannels = 0;
	// The frames of a block, at most the context's largest.
	unsigned mBlockFrames = 0;
	RenderDirection mDirection = RenderDirection::kForward;
	// The lowest frame, in either direction.
	std::int64_t mFirstFrame = 0;
};

// Gets each block as it comes, its UseSize frames being the next ones of the output, with the block's time
// in the graph. Channels may be flagged silent. The sink may work in the block.
using BlockSink = std::function<void(dsp::AudioBuffer& ioBlock, SN::TickTime const& inTime)>;

// Pulls a graph from start to end, or in reverse from end to start, as fast as it goes. Returns false
// when it was asked to stop before the end. Exceptions of the sink and of the graph pass through.
bool RenderOffline(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph, OfflineRange const& inRange,
	BlockSink const& inSink, std::stop_token const& inStop);

} // namespace SonaroHost
