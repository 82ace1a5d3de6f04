#include "OptionGroups.h"

#include "SonaroHost/Base/HostError.h"

namespace SonaroCommand
{

void GroupByInput(CLI::App& ioParser, std::initializer_list<char const*> inForSoundFiles,
	std::initializer_list<char const*> inForTimelines)
{
	for (CLI::Option* const option : ioParser.get_options())
	{
		option->group(kForAllInputs);
	}
	for (char const* const name : inForSoundFiles)
	{
		ioParser.get_option(name)->group(kForSoundFiles);
	}
	for (char const* const name : inForTimelines)
	{
		ioParser.get_option(name)->group(kForTimelines);
	}
}

void AddStreamOption(CLI::App& ioParser, unsigned& outStream)
{
	constexpr unsigned kMostStreams = 1000;
	ioParser
		.add_option("--stream", outStream,
			"Audio stream of a single movie to use, from 1 (default: all, their channels one after the "
			"other)")
		->option_text("N")
		->check(CLI::Range(1u, kMostStreams));
}

void RefuseGroup(CLI::App& ioParser, char const* inGroup, std::string const& inWhy)
{
	for (CLI::Option const* const option : ioParser.get_options())
	{
		if (option->get_group() == inGroup && option->count() > 0)
		{
			SonaroHost::Refuse(option->get_name() + " " + inWhy);
		}
	}
}

} // namespace SonaroCommand
