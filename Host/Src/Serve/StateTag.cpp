#include "StateTag.h"

#include <array>
#include <cinttypes>
#include <cstdio>

namespace SonaroHost::Serve
{

void StateTag::Add(std::string_view inText)
{
	std::string const length = std::to_string(inText.size()) + ":";
	UpdateHashState(mState, length.data(), length.size());
	UpdateHashState(mState, inText.data(), inText.size());
}

void StateTag::Add(std::optional<FileState> const& inState)
{
	Add(!inState ? "absent"
				 : std::to_string(inState->mDevice) + " " + std::to_string(inState->mNumber) + " " +
					   std::to_string(inState->mSize) + " " + std::to_string(inState->mTime));
}

std::string StateTag::GetText() const
{
	zorvcore::utility::Guid digest;
	GetHashResult(mState, digest);
	std::array<char, 33> text{};
	std::snprintf(text.data(), text.size(), "%016" PRIx64 "%016" PRIx64, digest.mHigh, digest.mLow);
	return text.data();
}

} // namespace SonaroHost::Serve
