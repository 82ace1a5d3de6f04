#include "SonaroHost/Files/Digest.h"

#include <array>
#include <cinttypes>
#include <cstdio>

namespace SonaroHost
{

std::string Digest::GetText() const
{
	zorvcore::utility::Guid digest;
	GetHashResult(mState, digest);
	std::array<char, 33> text{};
	std::snprintf(text.data(), text.size(), "%016" PRIx64 "%016" PRIx64, digest.mHigh, digest.mLow);
	return text.data();
}

} // namespace SonaroHost
