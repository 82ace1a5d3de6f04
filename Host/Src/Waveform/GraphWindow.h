#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/Types.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>

namespace SonaroHost
{

// A look into the output of a graph at any frame, through the one block around it that was pulled last.
// A block that does not follow the one before begins a new start of the graph.
class GraphWindow
{
public:
	// Frames of the graph from mFirst on, up to mEnd.
	struct Range
	{
		std::int64_t mFirst = 0;
		std::int64_t mEnd = 0;
	};

	// Nothing outside of inBounds is pulled.
	GraphWindow(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph, SN::FrameRate const& inFrameRate,
		unsigned inChannels, unsigned inBlockFrames, Range const& inBounds);

	Range const& GetBounds() const { return mBounds; }
	// What GetSamples sees.
	Range const& GetRange() const { return mRange; }
	bool Holds(std::int64_t inFrame) const { return mRange.mFirst <= inFrame && inFrame < mRange.mEnd; }
	// Pulls the block around a frame within the bounds.
	void MoveTo(std::int64_t inFrame);
	// Null for silence. inFrame is held.
	float const* GetSamples(unsigned inChannel, std::int64_t inFrame) const;

private:
	SN::InterfaceRef<SN::IAudioGenerator> mGraph;
	SN::FrameRate mFrameRate;
	Range mBounds;
	Range mRange;
	bool mIsStarted = false;
	dsp::AudioBuffer mBlock;
};

} // namespace SonaroHost
