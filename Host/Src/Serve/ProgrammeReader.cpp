#include "SonaroHost/Serve/ProgrammeReader.h"

#include "GraphPool.h"
#include "PlanarRead.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace SonaroHost::Serve
{

ProgrammeReader::ProgrammeReader(Programme inProgramme, unsigned inMostGraphs, double inWarmUpSeconds)
	: mLayout(inProgramme.GetLayout()),
	  mFrames(inProgramme.mFrames)
{
	auto const warmUp = static_cast<std::int64_t>(std::llround(inWarmUpSeconds * inProgramme.mSampleRate));
	mPool = std::make_shared<GraphPool>(
		std::move(inProgramme), GraphPool::Limits{std::max(inMostGraphs, 1u), warmUp});
}

void ProgrammeReader::Read(std::set<std::string> const& inLeftOut, ProgrammeRange const& inRange,
	std::span<float* const> outChannels, std::function<void()> const& inAfterBlock)
{
	// Whoever reads waits as long as it takes.
	auto const deadline = GraphPool::Clock::now() + std::chrono::hours(24 * 365);
	ReadPlanes(*mPool, inLeftOut, {mLayout, mFrames, false, inRange, deadline, outChannels, inAfterBlock});
}

} // namespace SonaroHost::Serve
