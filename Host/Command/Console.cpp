#include "Console.h"

#include "SonaroHost/HostError.h"
#include "SonaroHost/PrintableText.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace SonaroCommand
{

namespace
{

void PrintLine(std::string inText)
{
	std::replace(inText.begin(), inText.end(), '\n', ' ');
	// Whatever a message is made of, nothing in it reaches the terminal as a command.
	inText = SonaroHost::MakePrintable(inText) + "\n";
	// In one piece, so that lines of several processes do not mix.
	std::fwrite(inText.data(), 1, inText.size(), stderr);
}

} // namespace

void PrintError(std::string const& inMessage)
{
	PrintLine("sonaro: " + inMessage);
}

void PrintWarning(std::string const& inMessage)
{
	PrintLine("sonaro: warning: " + inMessage);
}

void PrintResult(std::string const& inText)
{
	std::string const text = SonaroHost::MakePrintableLines(inText);
	errno = 0;
	bool const isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
	if (!isWritten || std::fflush(stdout) != 0)
	{
		throw SonaroHost::HostError(SonaroHost::HostError::Kind::eOutput,
			"cannot write to the standard output: " + std::generic_category().message(errno));
	}
}

} // namespace SonaroCommand
