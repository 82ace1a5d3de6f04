#pragma once

#include "SonaroHost/Sequence/Description.h"

#include <cstdint>
#include <memory>

namespace SonaroHost::Sequence::Testing
{

// Which of the things that are told apart a random sequence has.
struct RandomTraits
{
	// Effects with a latency on items.
	bool mItemLatency = true;
	// Curves on faders and sends of the outermost sequence.
	bool mCurves = false;
};

struct RandomSequence
{
	std::shared_ptr<Description const> mSequence;
	SN::FrameRate mFrameRate;
	// How far a render may be from the truth, in parts of full scale.
	double mTolerance = 0.0;
	// Whether fades have lengths at which single precision tells their progress exactly.
	bool mHasExactFades = true;
};

// The same one for a seed, whatever the machine: tracks, submixes, sends and nested sequences of a second or
// less, made of MemoryMedia and LatentEffects.
RandomSequence MakeRandomSequence(unsigned inSeed, RandomTraits const& inTraits);

} // namespace SonaroHost::Sequence::Testing
