#pragma once

#include <memory>

namespace SonaroHost::Sequence
{

// What a fader leaves to the pan that is the next stage after it, so that both multiply in one pass over the memory.
// The two share it; a clone of the fader makes another one, which the clone of the pan takes over.
struct LeftGain
{
	// 1 for nothing, never 0.
	float mGain = 1.0f;
	// The clone's, from the cloning of the fader to that of the pan.
	std::shared_ptr<LeftGain> mClone;
};

} // namespace SonaroHost::Sequence
