#pragma once

#include "SonaroHost/Base/HostError.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize);

namespace SonaroFuzzing
{

// Ends the process where what was read breaks a promise.
void Require(bool inHolds);

// Messages are for people: one line of a readable length.
void RequireReadable(SonaroHost::HostError const& inError);

// A folder of this process, which is there.
std::filesystem::path const& GetFolder();

// Writes a file into the folder, in place of the last one of that name, and returns its path.
std::filesystem::path WriteInput(std::string const& inName, std::string_view inBytes);

inline std::string_view AsText(std::uint8_t const* inData, std::size_t inSize)
{
	return {reinterpret_cast<char const*>(inData), inSize};
}

// Runs what may refuse its input, but do nothing else that is wrong.
template <class Function>
void Try(Function const& inFunction)
{
	try
	{
		inFunction();
	}
	catch (SonaroHost::HostError const& error)
	{
		RequireReadable(error);
	}
}

} // namespace SonaroFuzzing
