#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Metering/LoudnessReading.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

// An input whose loudness was measured, as far as it has one.
struct MeasuredProgramme
{
	std::string mPath;
	int mSampleRate = 0;
	std::int64_t mFrames = 0;
	SN::AudioChannelLayout mLayout;
	// With its series; nothing where meters do not take the layout.
	std::optional<SonaroHost::LoudnessReading> mReading;
};

// Why there is no integrated loudness, for a message that begins with the input's name: "is silent, ..."; empty where
// there is one.
std::string DescribeProblem(MeasuredProgramme const& inProgramme);

// The values of one input in lines, those of several in a table.
std::string ListLoudnessForPeople(std::vector<MeasuredProgramme> const& inProgrammes);
std::string ListLoudnessForMachines(std::vector<MeasuredProgramme> const& inProgrammes);

} // namespace SonaroCommand
