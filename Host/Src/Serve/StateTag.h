#pragma once

#include "SonaroHost/Files/FileState.h"
#include "zorvcore/utility/Hash.h"

#include <optional>
#include <string>
#include <string_view>

namespace SonaroHost::Serve
{

// A digest of what decides what is heard, as 32 hexadecimal digits.
class StateTag
{
public:
	// Each with its length, so that neighbours do not run together.
	void Add(std::string_view inText);
	void Add(std::optional<FileState> const& inState);

	std::string GetText() const;

private:
	zorvcore::utility::HashValueMixerState mState;
};

} // namespace SonaroHost::Serve
