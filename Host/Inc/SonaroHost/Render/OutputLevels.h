#pragma once

#include <optional>

namespace SonaroHost
{

// What a whole render is brought to, once everything is mixed.
struct OutputLevels
{
	// The integrated loudness of the mix in the range, in LUFS, -70 to 0. Stems get the gain of the mix. Not together
	// with a gain for the whole, which it would undo.
	std::optional<double> mNormalizeLoudness;
	// The highest true peak of each file, in dBTP, -60 to 20.
	std::optional<double> mLimitDecibels;

	// Whether samples pass as they are.
	bool IsNone() const { return !mNormalizeLoudness && !mLimitDecibels; }
};

// What is measured. All tracks together take about as long as a render itself.
enum class Measuring
{
	kNothing,
	// Loudness and true peak of what is written.
	kOutput,
	// The mix is measured, and each track and nested sequence as well.
	kTracks,
};

} // namespace SonaroHost
