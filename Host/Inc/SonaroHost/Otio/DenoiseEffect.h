#pragma once

#include "SonaroHost/Otio/RationalTime.h"

#include <optional>
#include <string>

namespace SonaroHost::Otio
{

// The reduction of the noise of a clip's media, from "denoise" in the "metadata.sonaro" of an effect.
struct DenoiseEffect
{
	// Times from the first sample of the media on; the end is later.
	struct Range
	{
		RationalTime mStart;
		RationalTime mEnd;
	};

	// Decibels; nothing for as many as there are without it.
	std::optional<double> mReduction;
	// Where there is nothing but noise; nothing where the quietest stretches are learned.
	std::optional<Range> mLearn;
	// A JSON pointer.
	std::string mPlace;
};

} // namespace SonaroHost::Otio
