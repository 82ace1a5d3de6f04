#pragma once

#include <compare>
#include <cstdint>
#include <optional>

namespace SonaroHost
{

// How the noise of a recording is reduced: what is steady is learned first, and then taken away.
struct Denoise
{
	// How effects of timelines and reports name it.
	static constexpr char const* kUri = "sonaro:denoise";

	// The range of mReduction.
	static constexpr double kLeastReduction = 0.0;
	static constexpr double kMostReduction = 60.0;

	// Frames mFirst to mEnd of the recording.
	struct Span
	{
		std::int64_t mFirst = 0;
		std::int64_t mEnd = 0;

		friend auto operator<=>(Span const&, Span const&) = default;
	};

	// By how many decibels noise is reduced at most; 0 leaves every sample as it is.
	double mReduction = 18.0;
	// Where there is nothing but noise; without it, the quietest stretches of the whole recording are learned.
	std::optional<Span> mLearn;

	friend auto operator<=>(Denoise const&, Denoise const&) = default;
};

// Frames of the shortest span that noise can be learned from at a sample rate, 32 to 64 ms.
std::int64_t GetShortestLearnSpan(int inSampleRate);

} // namespace SonaroHost
