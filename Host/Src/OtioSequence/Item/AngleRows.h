#pragma once

#include "OtioSequence/MakerContext.h"
#include "OtioSequence/Scope.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace SonaroHost::Otio
{

// Which angle of a multicam stack is heard when. inStart: where its cuts count from, in the time of its content, which
// inScope is that of.
std::shared_ptr<std::vector<AngleStretch> const> FindAngles(
	Stack const& inStack, Ratio const& inStart, Scope const& inScope);

// Those in which one angle is heard.
std::vector<Passage> ListPassages(std::vector<AngleStretch> const& inStretches, std::size_t inAngle);

// Adds the rows of a stack before the row of that index: before those of stacks within it.
void AddAngleRows(MakerContext& ioContext, Stack const& inStack, Scope const& inScope, std::size_t inIndex);

} // namespace SonaroHost::Otio
