#include "SharedOptions.h"

#include "SonaroHost/Base/HostError.h"

namespace SonaroCommand
{

using SonaroHost::FadeShape;
using SonaroHost::TimePosition;

TimePosition ParseTime(std::string const& inOption, std::string const& inText)
{
	auto const time = TimePosition::Parse(inText);
	if (!time)
	{
		SonaroHost::Refuse(
			inOption + ": '" + inText +
			"' is not a time; use seconds (12.5), minutes (1:02.5), hours (1:00:02.5) or samples (48000s)");
	}
	return *time;
}

std::optional<TimePosition> ParseTimeIfGiven(std::string const& inOption, std::string const& inText)
{
	return inText.empty() ? std::nullopt : std::optional(ParseTime(inOption, inText));
}

void AddTimelineOptions(CLI::App& ioParser, std::vector<std::string>& outMediaFolders, std::string& outFades)
{
	ioParser
		.add_option("--media", outMediaFolders,
			"Folder to search for media that are not found at their own paths; can be given more than once")
		->option_text("DIR ...")
		->allow_extra_args(false);
	ioParser
		.add_option("--fades", outFades,
			"Curve of transitions and fades that name none: linear, equal-power or s-curve (default: "
			"equal-power)")
		->option_text("NAME")
		->check(CLI::IsMember({"linear", "equal-power", "s-curve"}));
}

FadeShape ParseFades(std::string const& inName)
{
	return inName == "linear"    ? FadeShape::kLinear
		   : inName == "s-curve" ? FadeShape::kSCurve
								 : FadeShape::kEqualPower;
}

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
