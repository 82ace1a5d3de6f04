#include "DenoiseOptions.h"

#include "SharedOptions.h"
#include "SonaroHost/Base/HostError.h"

namespace SonaroCommand
{

using SonaroHost::NoiseReduction;

namespace
{

NoiseReduction::Range ParseRange(std::string const& inText)
{
	std::size_t const dots = inText.find("..");
	if (dots == std::string::npos || dots == 0 || dots + 2 == inText.size())
	{
		SonaroHost::Refuse(
			"--learn: '" + inText + "' is not a range; use START..END, two times in the input, like 0.5..2");
	}
	return {ParseTime("--learn", inText.substr(0, dots)), ParseTime("--learn", inText.substr(dots + 2))};
}

} // namespace

void DenoiseOptions::AddOptions(CLI::App& ioParser)
{
	CLI::Option* const denoise = ioParser.add_flag("--denoise", mDenoises,
		"Reduce steady noise of the inputs, such as hiss and hum, before all else; it takes another pass "
		"over each input to learn the noise");
	ioParser
		.add_option("--reduction", mReduction,
			"With --denoise: by how many dB noise is reduced at most, 0 (not at all) to 60 (default: 18)")
		->option_text("DB")
		->needs(denoise);
	ioParser
		.add_option("--learn", mLearn,
			"With --denoise: where a single input has nothing but noise (default: its quietest stretches "
			"count as noise)")
		->option_text("START..END")
		->needs(denoise);
}

std::optional<NoiseReduction> DenoiseOptions::MakeReduction() const
{
	if (!mDenoises)
	{
		return std::nullopt;
	}
	NoiseReduction reduction;
	reduction.mReduction = mReduction.value_or(reduction.mReduction);
	if (!mLearn.empty())
	{
		reduction.mLearn = ParseRange(mLearn);
	}
	return reduction;
}

} // namespace SonaroCommand
