#include "TimeOption.h"

#include "SonaroHost/Base/HostError.h"

namespace SonaroCommand
{

using SonaroHost::TimePosition;

TimePosition ParseTime(std::string const& inOption, std::string const& inText)
{
	auto const time = TimePosition::Parse(inText);
	if (!time)
	{
		SonaroHost::Refuse(inOption + ": '" + inText +
						   "' is not a time; use seconds (12.5), minutes "
						   "(1:02.5), hours (1:00:02.5) or samples (48000s)");
	}
	return *time;
}

std::optional<TimePosition> ParseTimeIfGiven(std::string const& inOption, std::string const& inText)
{
	return inText.empty() ? std::nullopt : std::optional(ParseTime(inOption, inText));
}

} // namespace SonaroCommand
