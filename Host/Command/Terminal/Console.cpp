#include "Console.h"

#include "Caller.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Files/StandardStreams.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace SonaroCommand
{

namespace
{

// Where results are printed.
std::FILE* sResults = stdout;

void PrintLine(std::string inText)
{
	std::replace(inText.begin(), inText.end(), '\n', ' ');
	// Whatever a message is made of, nothing in it reaches the terminal as a command.
	inText = SonaroHost::MakePrintable(inText) + "\n";
	// The line is written in one piece, so that lines of several processes do not mix.
	std::fwrite(inText.data(), 1, inText.size(), stderr);
}

} // namespace

void PrintError(std::string const& inMessage)
{
	if (Caller* const caller = FindCaller())
	{
		caller->TakeError(inMessage);
		return;
	}
	PrintLine("sonaro: " + inMessage);
}

void PrintWarning(std::string const& inMessage)
{
	if (Caller* const caller = FindCaller())
	{
		caller->TakeWarning(inMessage);
		return;
	}
	PrintLine("sonaro: warning: " + inMessage);
}

std::string ShowOutput(std::string const& inPath)
{
	return SonaroHost::IsStandardStream(inPath) ? "standard output" : inPath;
}

void MakeRoomForOutputs(std::initializer_list<std::string> inPaths)
{
	if (FindCaller())
	{
		return;
	}
	bool const isTaken = std::ranges::any_of(
		inPaths, [](std::string const& inPath) { return SonaroHost::IsStandardStream(inPath); });
	sResults = isTaken ? stderr : stdout;
}

void PrintResult(std::string const& inText)
{
	if (Caller* const caller = FindCaller())
	{
		caller->TakeResult(inText);
		return;
	}
	std::string const text = SonaroHost::MakePrintableLines(inText);
	errno = 0;
	bool const isWritten = std::fwrite(text.data(), 1, text.size(), sResults) == text.size();
	if (!isWritten || std::fflush(sResults) != 0)
	{
		SonaroHost::RefuseOutput(
			"cannot write to the standard output: " + std::generic_category().message(errno));
	}
}

void FinishAfter(std::string const& inOutput, std::function<void()> const& inRest)
{
	using SonaroHost::HostError;
	try
	{
		inRest();
	}
	catch (HostError const& error)
	{
		if (inOutput.empty())
		{
			throw;
		}
		HostError::Parts parts = error.GetParts();
		parts.mReason += SonaroHost::IsStandardStream(inOutput)
							 ? "; the output was written to the standard output before"
							 : "; " + SonaroHost::QuotePath(inOutput) + " is complete and was kept";
		throw HostError(error.GetKind(), std::move(parts));
	}
}

} // namespace SonaroCommand
