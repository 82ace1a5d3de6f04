#pragma once

#include "zorvcore/utility/Hash.h"

#include <cstddef>
#include <string>

namespace SonaroHost
{

// A digest of bytes (XXH3, 128 bits), to tell files apart that nobody forged. How they are cut does not matter.
class Digest
{
public:
	void Add(void const* inBytes, std::size_t inCount) { UpdateHashState(mState, inBytes, inCount); }
	// 32 hexadecimal digits.
	std::string GetText() const;

private:
	zorvcore::utility::HashValueMixerState mState;
};

} // namespace SonaroHost
