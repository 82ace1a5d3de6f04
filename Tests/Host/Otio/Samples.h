#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace SonaroHost::Otio
{

nlohmann::json MakeTime(double inValue, double inRate);
nlohmann::json MakeRange(double inStart, double inDuration, double inRate);

// One of everything that a file can hold: an audio track of a clip with effects and markers, a transition, a
// clip with two media references, a gap and a nested stack; a track of pictures; every setting of
// "metadata.sonaro", on the timeline and below.
nlohmann::json MakeFullTimeline();

// A timeline of one audio track with these children.
nlohmann::json MakeTimeline(nlohmann::json inChildren);

// Where readers of files that others wrote begin: the above, old schemas, other roots, foreign levels, odd
// literals.
std::vector<std::string> MakeSeedCorpus();

} // namespace SonaroHost::Otio
