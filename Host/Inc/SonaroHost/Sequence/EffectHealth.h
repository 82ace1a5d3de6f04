#pragma once

#include "SonaroHost/Base/EffectFault.h"

#include <atomic>
#include <string>
#include <utility>

namespace SonaroHost::Sequence
{

// Whether one effect of a graph goes on working. From its first fault on it is bypassed, its latency staying. Instances
// of a nested sequence share it.
//
// Threads  mFault is written by the one that renders and read by any; the rest never changes.
struct EffectHealth
{
	EffectHealth(std::string inName, std::string inPlace, std::string inOrigin)
		: mName(std::move(inName)),
		  mPlace(std::move(inPlace)),
		  mOrigin(std::move(inOrigin))
	{
	}

	std::string mName;
	// What has it, for people, as "'Scene 4' on 'Dialogue'".
	std::string mPlace;
	// The mOrigin of what has it.
	std::string mOrigin;
	std::atomic<EffectFault::Kind> mFault{EffectFault::Kind::kNone};
};

} // namespace SonaroHost::Sequence
