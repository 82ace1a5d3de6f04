#pragma once

#include "ItemTiming.h"
#include "OtioSequence/MakerContext.h"

#include <memory>
#include <vector>

namespace SonaroHost::Otio
{

// A multicam stack in a sequence.
struct MulticamPlace
{
	Stack const& mStack;
	// That of the angles.
	Scope const& mScope;
	// Where its cuts count from, and what is heard of it, in the time of its content.
	Ratio mStart;
	TimeSpan mUsed;
	// The angles' frame that is heard first.
	std::int64_t mFirstFrame = 0;
};

bool IsMulticam(ItemView const& inItem);

// The item's content of sequences of all angles, with the cuts on the grid of the scope.
Sequence::Multicam MakeMulticam(MakerContext& ioContext, MulticamPlace const& inPlace,
	std::vector<std::shared_ptr<Sequence::Description const>> inAngles);

} // namespace SonaroHost::Otio
