#pragma once

#include "SonaroHost/Media/AudioFileInfo.h"
#include "SonaroHost/Offline/LearnedNoise.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <vector>

namespace SonaroHost
{

// Recordings, stretched or not, whose noise is reduced or not.
using NoisyRecordings = std::vector<AudioFileInfo const*>;

// What has to be read of them to learn their noise; 0 where nothing has to be learned.
std::int64_t CountFramesToLearn(NoisyRecordings const& inRecordings);

// Learns the noise of recordings, for all copies of them, unless it is known. inReport: called on this thread now and then
// with the frames that are done. False when asked to stop. Throws a HostError that names the file.
bool LearnNoise(NoisyRecordings const& inRecordings, std::function<void(std::int64_t)> const& inReport,
	std::stop_token const& inStop);

// What was learned of them until now, in their order.
std::vector<LearnedNoise> ListLearnedNoise(NoisyRecordings const& inRecordings);

} // namespace SonaroHost
