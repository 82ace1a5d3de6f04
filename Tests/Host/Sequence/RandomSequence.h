#pragma once

#include "MemoryMedia.h"
#include "NaiveParameter.h"
#include "SonaroHost/Sequence/Description.h"

#include <cstdint>
#include <memory>

namespace SonaroHost::Sequence::Testing
{

struct RandomSequence
{
	std::shared_ptr<Description const> mSequence;
	SN::FrameRate mFrameRate;
	// Of its recordings.
	std::shared_ptr<PrefetchLedger> mLedger;
	// Of the outermost sequence, for a playback from its start.
	LiveEdits mEdits;
};

// The same one for a seed, whatever the machine: tracks, submixes, sends and nested sequences of a second or
// less, up to four within each other, made of MemoryMedia and LatentEffects, items forward and backwards, with fades
// of any length, and curves on all parameters. Seeds that 4 divides have items of other rates and speeds, too.
RandomSequence MakeRandomSequence(unsigned inSeed);

} // namespace SonaroHost::Sequence::Testing
