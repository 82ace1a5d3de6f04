#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Base/EffectFacts.h"
#include "SonaroHost/Base/EffectFault.h"
#include "SonaroHost/Sequence/OutermostTime.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace SonaroHost::Sequence
{

// Whether one effect of a graph goes on working. From a fault of its own on it is bypassed, its latency staying; what it
// cannot be given is silenced. Instances of a nested sequence share it.
//
// Latency  A graph delays for what its effects state when it is made. An effect that later states more is heard late by the
//          difference: whoever renders makes another graph, in which the larger latency counts from the start. In a
//          playback the edge of any block is the place for that.
// Threads  What is atomic is written by the one that renders and read by any; the rest never changes.
struct EffectHealth
{
	EffectHealth(std::string inName, std::string inPlace, std::string inOrigin)
		: mName(std::move(inName)),
		  mPlace(std::move(inPlace)),
		  mOrigin(std::move(inOrigin))
	{
	}

	// The first fault counts, and one of its own more than what it was given.
	void NoteFault(EffectFault::Kind inKind, SN::TickTime const& inTime)
	{
		EffectFault::Kind const before = mFault.load(std::memory_order_relaxed);
		bool const isWorse = before == EffectFault::Kind::kBadInput && inKind != EffectFault::Kind::kBadInput;
		if (before == EffectFault::Kind::kNone || isWorse)
		{
			mFaultTicks.store(inTime.GetTicks(), std::memory_order_relaxed);
			mFault.store(inKind, std::memory_order_release);
		}
	}
	bool IsLate() const { return mFoundLatency.load(std::memory_order_relaxed) > mLatencyFrames; }

	std::string mName;
	// What has it, for people, as "'Scene 4' on 'Dialogue'".
	std::string mPlace;
	// The mOrigin of what has it.
	std::string mOrigin;
	// What the graph delays for.
	std::int64_t mLatencyFrames = 0;
	// How the times of what has it lie in the outermost sequence.
	OutermostTime mTime;
	// For reports; null for none.
	std::shared_ptr<EffectFacts const> mFacts;

	std::atomic<EffectFault::Kind> mFault{EffectFault::Kind::kNone};
	// When the first wrong sample, or the block of the fault, is heard in what has the effect; in ticks. Valid once mFault
	// is set.
	std::atomic<std::int64_t> mFaultTicks{0};
	// The largest latency that it stated so far, in frames.
	std::atomic<std::int64_t> mFoundLatency{0};
};

} // namespace SonaroHost::Sequence
