#pragma once

#include "SonaroHost/Base/HostError.h"

#include <utility>

namespace SonaroHost
{

// For what is no sound file at all: a folder, a text. Whoever reads more than sound files says what it takes then.
class NoSoundError final : public HostError
{
public:
	explicit NoSoundError(Parts inParts)
		: HostError(Kind::eInput, std::move(inParts))
	{
	}
};

} // namespace SonaroHost
