#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Render/Programme.h"
#include "SonaroHost/Serve/MixFile.h"

#include <functional>
#include <memory>
#include <set>
#include <span>
#include <string>

namespace SonaroHost::Serve
{

class GraphPool;

// Samples of a programme at any place and in any order: those of the WAV of floats that a render writes.
//
// Threads  Any.
class ProgrammeReader
{
public:
	// inMostGraphs: how many reads there can be at once. inWarmUpSeconds: see MixFile.
	ProgrammeReader(Programme inProgramme, unsigned inMostGraphs, double inWarmUpSeconds);

	// Fills as many frames of each channel as the range has; silence where that lies outside of the programme. inLeftOut:
	// the origins of outermost tracks that are not heard. inAfterBlock is called now and then. Throws a HostError, and
	// whatever inAfterBlock throws.
	void Read(std::set<std::string> const& inLeftOut, ProgrammeRange const& inRange,
		std::span<float* const> outChannels, std::function<void()> const& inAfterBlock = {});

private:
	SN::AudioChannelLayout mLayout;
	std::int64_t mFrames;
	std::shared_ptr<GraphPool> mPool;
};

} // namespace SonaroHost::Serve
