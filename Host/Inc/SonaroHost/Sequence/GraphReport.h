#pragma once

#include "SonaroHost/Sequence/EffectHealth.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

// What became of an item. Frames are those of the graph's rate, in the time of the sequence that holds it.
struct ItemReport
{
	// Index of its track in the report.
	std::size_t mTrack = 0;
	std::string mName;
	// Where it is heard: its first frame, and the one after its last.
	std::int64_t mFirstFrame = 0;
	std::int64_t mEndFrame = 0;
	// The latency of its own effects, which is compensated.
	std::int64_t mLatencyFrames = 0;
};

// What became of a track, a submix or a master.
struct TrackReport
{
	// The tracks and items that lead to it, from the outermost sequence on, as "Dialogue / Scene 4 / Boom".
	std::string mPlace;
	// How far ahead of the sequence's time it is asked.
	std::int64_t mAheadFrames = 0;
	// The latency of its effects.
	std::int64_t mLatencyFrames = 0;
	// By how much its output is delayed to meet others.
	std::int64_t mWaitFrames = 0;
};

// What became of a description in a graph.
struct GraphReport
{
	std::vector<ItemReport> mItems;
	std::vector<TrackReport> mTracks;
	// Nested sequences that stay silent, since the same sequence stands in more items than the engine's limit of
	// instances allows: what leads to each one, as for a track.
	std::vector<std::string> mOmittedNests;
	// What keeps the graph from being rendered in pieces by several graphs: the first thing found whose sound depends on more
	// of what was rendered before than is settled at a start, and why, as "the effect 'Reverb' of 'Dialogue' may depend on all
	// that came before". Empty where any start gives the same samples.
	std::string mWhyInOneRun;
	// The effects, which go on being written while the graph is rendered.
	std::vector<std::shared_ptr<EffectHealth const>> mEffects;
};

} // namespace SonaroHost::Sequence
