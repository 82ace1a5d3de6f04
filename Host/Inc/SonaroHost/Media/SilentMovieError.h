#pragma once

#include "SonaroHost/Base/HostError.h"

#include <utility>

namespace SonaroHost
{

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
