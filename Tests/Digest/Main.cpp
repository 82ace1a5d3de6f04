// Prints a line for each group of numbers that the engine and the library for hosts make of given ones: how many there
// are, a hash of their bits, and the group's name. The lines are the same with every compiler and on every processor and
// system.
//
//	digest [name ...]    the groups whose names begin so; all of them by default

#include "Digest.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <exception>
#include <string_view>

namespace
{

using namespace SonaroDigest;

void Print(Group const& inGroup)
{
	Digest digest;
	inGroup.mRun(digest);
	std::printf("%016" PRIx64 " %11" PRId64 " %s\n", digest.GetHash(), digest.GetCount(), inGroup.mName);
	std::fflush(stdout);
}

} // namespace

int main(int inCount, char** inArguments)
{
	std::span<char*> const names(inArguments + 1, static_cast<std::size_t>(inCount - 1));
	try
	{
		for (auto const groups : {GetKernelGroups(), GetEngineGroups(), GetHostGroups(), GetGraphGroups()})
		{
			for (Group const& group : groups)
			{
				auto const isGroup = [&group](char const* inName)
				{ return std::string_view(group.mName).starts_with(inName); };
				if (names.empty() || std::any_of(names.begin(), names.end(), isGroup))
				{
					Print(group);
				}
			}
		}
		return 0;
	}
	catch (std::exception const& error)
	{
		std::fprintf(stderr, "digest: %s\n", error.what());
		return 1;
	}
}
