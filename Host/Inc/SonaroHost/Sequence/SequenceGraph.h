#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Sequence/Description.h"

#include <cstdint>
#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

// What became of a description. Frames are those of the graph's rate, in the time of the sequence that holds
// them.
struct ItemReport
{
	// Index of its track in the report.
	std::size_t mTrack = 0;
	std::string mName;
	std::int64_t mFirstFrame = 0;
	std::int64_t mEndFrame = 0;
	// Of its own effects, compensated.
	std::int64_t mLatencyFrames = 0;
};

// Of a track, a submix or a master.
struct TrackReport
{
	// The tracks and items that lead to it, from the outermost sequence on, as "Dialogue / Scene 4 / Boom".
	std::string mPlace;
	// How far ahead of the sequence's time it is asked.
	std::int64_t mAheadFrames = 0;
	// Of its effects, and by which its output waits for others.
	std::int64_t mLatencyFrames = 0;
	std::int64_t mWaitFrames = 0;
};

struct GraphReport
{
	std::vector<ItemReport> mItems;
	std::vector<TrackReport> mTracks;
};

// The engine's graph of a sequence: each clip an item of its track, each track and submix a renderer, all in one
// group, every feeder before what it feeds; nested sequences are groups within items.
//
// Latency   Every branch arrives at every mix at its nominal sample. Of tracks, submixes and sends, each one
//           is asked ahead of time by what lies between it and the output; of items, the engine renders
//           ahead. What comes out first therefore needs GetWarmUpFrames of the graph before it.
// Cuts      Any cut of a range into blocks gives the same samples, unless something is resampled, or a fade's
//           progress, which is rounded to single precision and carried along a block, is not exact.
// Start     A graph renders one run: Preroll, then block after block forward or in reverse. A run may begin
//           anywhere; from the same frame on, curves are sampled at the same frames.
// Reverse   Tracks, submixes and nested sequences are exact. What the effects of items delay is made up for
//           forward alone, and in a loop when the items are reached without a jump.
// Jumps     A nested sequence that is read out of turn, as where a loop comes round, renders on the spot what
//           its branches need to settle, as many frames as they are asked ahead.
// Threads   The constructor: the one that owns the context.
class SequenceGraph
{
public:
	// inContext: of this graph alone, with prefetch for a playback; whoever made it clears it when the graph
	// is done with. Throws a HostError that names the track and the item: of kind eRequest for a description
	// that contradicts itself, such as sends that run in a circle, which is told by its names; of kind eInput
	// for media that cannot be opened; of kind eEngine.
	SequenceGraph(Description const& inDescription,
		SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate);

	SN::InterfaceRef<SN::IAudioGenerator> const& GetGenerator() const { return mGenerator; }
	SN::AudioChannelLayout const& GetLayout() const { return mLayout; }

	// So many frames before the first that is wanted, or, in reverse, behind the last one, are to be pulled and
	// thrown away: what the tracks are asked ahead by, and what their items need to settle where a run begins
	// in the middle of them.
	std::int64_t GetWarmUpFrames() const { return mWarmUpFrames; }

	// How far ahead the tracks of the outermost sequence are asked, without repetition, in rising order. A playback that
	// loops ends a block wherever one of them crosses the loop's end, which is where it wraps.
	std::vector<std::int64_t> const& GetAheadFrames() const { return mAheadFrames; }

	GraphReport const& GetReport() const { return mReport; }

private:
	SN::InterfaceRef<SN::IAudioGenerator> mGenerator;
	SN::AudioChannelLayout mLayout;
	std::int64_t mWarmUpFrames = 0;
	std::vector<std::int64_t> mAheadFrames;
	GraphReport mReport;
};

// The end of the last item, 0 without any.
SN::TickTime GetLength(Description const& inDescription);

} // namespace SonaroHost::Sequence
