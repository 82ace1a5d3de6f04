#include "TimelineOptions.h"

namespace SonaroCommand
{

using SonaroHost::FadeShape;

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

} // namespace SonaroCommand
