#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "SonaroHost/Render/Fades.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace SonaroHost
{

// A file that a render writes: as planned, and what came of it.
struct RenderedFile
{
	std::filesystem::path mPath;
	// The name of the track or marker; empty for the mix.
	std::string mName;
	// The range in the programme.
	ProgrammeRange mRange;
	// The fades at the ends of that range.
	Fades mFades;
	// What a WAV carries as its place in time, in samples since midnight.
	std::optional<std::int64_t> mTimeReference;
	// The peak of the samples before rounding; linear, 1 being full scale.
	float mPeak = 0.0f;
	std::int64_t mClippedSamples = 0;
	std::optional<LoudnessReading> mLoudness;
	// The least gain of the limiter; 1 where it had nothing to do.
	double mSmallestLimiterGain = 1.0;
};

} // namespace SonaroHost
