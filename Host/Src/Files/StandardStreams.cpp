#include "SonaroHost/Files/StandardStreams.h"

#include "SystemFiles.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace SonaroHost
{

namespace
{

[[noreturn]] void RefuseStandardInput(std::string const& inWhy)
{
	throw HostError(HostError::Kind::kInput, inWhy + ": " + std::generic_category().message(errno));
}

// Takes the standard input to its end.
FileHandle SpoolStandardInput()
{
	constexpr char const* kWhyNotKept =
		"the standard input cannot be stored in a temporary file (TMPDIR sets the folder)";
	FileHandle spool = MakeUnnamedFile();
	if (!spool)
	{
		RefuseStandardInput(kWhyNotKept);
	}
	if (!CopyRest(stdin, spool.get()))
	{
		RefuseStandardInput(kWhyNotKept);
	}
	if (std::ferror(stdin) != 0)
	{
		RefuseStandardInput("the standard input cannot be read");
	}
	if (std::fflush(spool.get()) != 0)
	{
		RefuseStandardInput(kWhyNotKept);
	}
	return spool;
}

} // namespace

std::string QuoteInput(std::filesystem::path const& inPath)
{
	return IsStandardStream(inPath) ? "the standard input" : QuotePath(inPath);
}

std::string QuoteOutput(std::filesystem::path const& inPath)
{
	return IsStandardStream(inPath) ? "the standard output" : QuotePath(inPath);
}

HostError::Parts MakeInputParts(
	std::filesystem::path const& inPath, std::string const& inReason, std::string const& inRemedy)
{
	return IsStandardStream(inPath) ? HostError::Parts{{}, {}, "the standard input " + inReason, inRemedy}
									: HostError::Parts{inPath, {}, inReason, inRemedy};
}

void RefuseInput(
	std::filesystem::path const& inPath, std::string const& inReason, std::string const& inRemedy)
{
	throw HostError(HostError::Kind::kInput, MakeInputParts(inPath, inReason, inRemedy));
}

std::filesystem::path GetReadablePath(std::filesystem::path const& inPath)
{
	if (!IsStandardStream(inPath))
	{
		return inPath;
	}
	// What was read once is gone from the stream.
	static FileHandle const sSpool = SpoolStandardInput();
	return GetPathOfOpenFile(sSpool.get());
}

} // namespace SonaroHost
