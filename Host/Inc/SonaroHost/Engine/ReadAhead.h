#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Engine/OfflineRender.h"

#include <cstdint>

namespace SonaroHost
{

class PrefetchBatch;

// How reading ahead of the playhead went.
struct ReadAheadReport
{
	// The largest age of a batch at its end, in percent of the time that it plays for.
	int mDiskLoadPercent = 0;
	// Batches that were given up for overload and had to be asked for again.
	unsigned mGivenUp = 0;
	// What the engine measures of it.
	bool mWasBehind = false;
};

// Has the sources of a graph read ahead of its playhead, as a player does: by stretches of about two
// seconds, at playback priority, the next one while one is rendered. Unlike a player it waits for a
// stretch, so that nothing is missed but what the media manager has no room for.
//
// Graph    Of a context with prefetch on.
// Process  The prefetch interval and the engine's measures are those of the process: one at a time.
// Threads  The one that renders.
class ReadAhead
{
public:
	// Asks for the first stretch.
	ReadAhead(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph, OfflineRange const& inRange);
	// Gives up what nobody waited for.
	~ReadAhead();
	ReadAhead(ReadAhead const&) = delete;
	ReadAhead& operator=(ReadAhead const&) = delete;

	// Called before the first block, and after each one: so many frames of the output are rendered. Returns when the
	// next block's audio was read.
	void Advance(std::int64_t inFramesDone);

	ReadAheadReport GetReport();

private:
	// Asks for the stretch that begins so many frames into the output.
	void Request(std::int64_t inFramesDone);
	void WaitFor(std::int64_t inFramesDone);

	SN::InterfaceRef<SN::IAudioGenerator> mGraph;
	OfflineRange mRange;
	// A whole number of blocks.
	std::int64_t mStretchFrames;
	// The stretch that was asked for last.
	SN::InterfaceRef<PrefetchBatch> mBatch;
	ReadAheadReport mReport;
};

} // namespace SonaroHost
