#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Prefetcher.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Sequence/Description.h"
#include "SonaroHost/Sequence/GraphReport.h"
#include "SonaroHost/Sequence/GraphView.h"

#include <cstdint>
#include <utility>

namespace SonaroHost::Sequence
{

// The engine's graph of a sequence: each clip an item of its track, each track and submix a renderer, all in one
// group, every feeder before what it feeds; nested sequences are groups within items.
//
// Meaning   What is heard at a frame is a function of the description and the frame: the same for an export and a
//           playback, after any start, in any cut into blocks, in a loop, and in reverse, whatever was asked before.
//           Docs/sequence.md lists the exceptions.
// Latency   Every branch arrives at every mix at its nominal sample. Each track is asked ahead of time by what lies
//           between it and the output, each effect of an item hears its sound ahead.
// Settling  What is read out of turn, at a start, a seek, a jump or an item's beginning, is first run for as long as
//           its effects are late, within the block that asks for it. So such a block takes longer, by about the time
//           that it takes to render the latencies below it: the report's largest mAheadFrames, and the latencies of
//           items. Meters do not hear it. Nobody needs to pull anything ahead
//           of what is wanted.
// Runs      Any number: Preroll, then blocks, forward or in reverse; between runs Reset, which Preroll does by itself.
//           Within a run time may jump.
// Loops     A playback's loop range may have any length and may change while it plays. Blocks end at its end at the
//           latest, in reverse at its start, and go on from its other side.
// Reading   AccumulatePrefetchRequests asks for all that the output of a range depends on, also in reverse and beyond
//           the jump of a loop.
// Threads   The constructor: the one that owns the context.
class SequenceGraph
{
public:
	// inContext: of this graph alone, with prefetch for a playback; whoever made it clears it when the graph
	// is done with. Throws a HostError that names the track and the item: of kind kRequest for a description
	// that contradicts itself, such as sends that run in a circle, which is described by its names; of kind kInput
	// for media that cannot be opened; of kind kEngine.
	// inPrefetcher: that of the context, which outlives the generator; null for an export.
	SequenceGraph(Description const& inDescription,
		SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
		SN::Prefetcher const* inPrefetcher = nullptr, GraphView const& inView = {});

	SN::InterfaceRef<SN::IAudioGenerator> const& GetGenerator() const { return mGenerator; }
	// The layout of what the generator gives.
	SN::AudioChannelLayout const& GetLayout() const { return mLayout; }

	// What the graph has to say of its tracks, effects and latencies.
	GraphReport const& GetReport() const { return mReport; }
	// Hands the report over; it is empty afterwards.
	GraphReport TakeReport() { return std::move(mReport); }

private:
	SN::InterfaceRef<SN::IAudioGenerator> mGenerator;
	SN::AudioChannelLayout mLayout;
	GraphReport mReport;
};

// The end of the last item, 0 without any.
SN::TickTime GetLength(Description const& inDescription);

// How many channels all tracks, submixes and masters have, those of nested sequences for each place that these stand
// in: each of them keeps blocks in memory.
std::uint64_t CountChannels(Description const& inDescription);

} // namespace SonaroHost::Sequence
