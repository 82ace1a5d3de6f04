#pragma once

#include "SonaroHost/Base/HostError.h"

#include <utility>

namespace SonaroHost
{

// Thrown for what is no sound file at all, such as a folder or a text. Whoever reads more than sound files then says
// what it takes.
class NoSoundError final : public HostError
{
public:
	explicit NoSoundError(Parts inParts)
		: HostError(Kind::kInput, std::move(inParts))
	{
	}
};

// Thrown for a movie that has no sound. A clip of one is silent, and nothing is missing.
class SilentMovieError final : public HostError
{
public:
	explicit SilentMovieError(Parts inParts)
		: HostError(Kind::kInput, std::move(inParts))
	{
	}
};

} // namespace SonaroHost
