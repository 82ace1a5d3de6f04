#include "MessageCapture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string_view>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace SonaroHost::Effects
{

namespace
{

struct CloseFile
{
	void operator()(std::FILE* inFile) const { std::fclose(inFile); }
};

// Without a name; null where none can be made.
std::FILE* GetSpool()
{
	static std::unique_ptr<std::FILE, CloseFile> const sSpool(std::tmpfile());
	return sSpool.get();
}

std::string ReadSpool(std::FILE* inSpool)
{
	std::rewind(inSpool);
	std::string text;
	std::array<char, 4096> part{};
	for (std::size_t count = part.size(); count == part.size();)
	{
		count = std::fread(part.data(), 1, part.size(), inSpool);
		text.append(part.data(), count);
	}
	return text;
}

// What the line says, if it is one of the libraries'.
std::string_view FindMessage(std::string_view inLine)
{
	for (std::string_view const mark : {"error: ", "warning: "})
	{
		bool const isTheirs =
			inLine.starts_with(mark) || inLine.starts_with("lilv_") || inLine.starts_with("sord_");
		std::size_t const place = inLine.find(mark);
		if (isTheirs && place != std::string_view::npos)
		{
			return inLine.substr(place + mark.size());
		}
	}
	return {};
}

// A syntax error with its line is followed by the files that cannot be loaded because of it.
void DropHarmless(std::vector<std::string>& ioMessages)
{
	auto const isConsequence = [](std::string const& inMessage)
	{ return inMessage.starts_with("Error loading ") || inMessage.starts_with("Error reading "); };
	if (!std::ranges::all_of(ioMessages, isConsequence))
	{
		std::erase_if(ioMessages, isConsequence);
	}
	// Numbers in a type that lilv does not know are read as texts.
	std::erase_if(
		ioMessages, [](std::string const& inMessage) { return inMessage.starts_with("Unknown datatype "); });
}

} // namespace

#ifdef _WIN32

MessageCapture::MessageCapture() = default;

std::vector<std::string> MessageCapture::Take()
{
	return {};
}

#else

MessageCapture::MessageCapture()
{
	std::FILE* const spool = GetSpool();
	std::fflush(stderr);
	if (spool && std::fflush(spool) == 0 && ftruncate(fileno(spool), 0) == 0)
	{
		std::rewind(spool);
		mErrors = dup(STDERR_FILENO);
		if (mErrors >= 0)
		{
			dup2(fileno(spool), STDERR_FILENO);
		}
	}
}

std::vector<std::string> MessageCapture::Take()
{
	if (mErrors < 0)
	{
		return {};
	}
	std::fflush(stderr);
	dup2(mErrors, STDERR_FILENO);
	close(mErrors);
	mErrors = -1;
	std::vector<std::string> messages;
	std::istringstream lines(ReadSpool(GetSpool()));
	for (std::string line; std::getline(lines, line);)
	{
		std::string const message(FindMessage(line));
		if (message.empty())
		{
			std::fprintf(stderr, "%s\n", line.c_str());
		}
		else if (std::ranges::find(messages, message) == messages.end())
		{
			messages.push_back(message);
		}
	}
	DropHarmless(messages);
	return messages;
}

#endif

std::string MessageCapture::TakeLast()
{
	auto const messages = Take();
	return messages.empty() ? std::string() : messages.back();
}

} // namespace SonaroHost::Effects
