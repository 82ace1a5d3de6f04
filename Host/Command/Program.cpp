#include "Program.h"

#include "Features/FeatureList.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Binaural/SofaEars.h"
#include "SonaroHost/Effects/EffectLibrary.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "SonaroHost/Media/NoSoundError.h"
#include "SonaroHost/Playback/SoundDevices.h"
#include "Terminal/Console.h"
#include "Terminal/UsageError.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include <algorithm>
#include <sstream>

namespace SonaroCommand
{

namespace
{

using SonaroHost::HostError;

std::string DescribeEffects()
{
	std::string const libraries = SonaroHost::Effects::DescribeEffectLibraries();
	return libraries.empty()
			   ? "not hosted; lilv was not built in with SONARO_WITH_LV2, which needs liblilv-dev"
			   : "LV2 plugins by " + libraries;
}

std::string DescribeListeners()
{
	std::string const library = SonaroHost::DescribeSofaLibrary();
	return library.empty() ? "built-in ears alone; libmysofa was not built in with SONARO_WITH_SOFA, which "
							 "needs libmysofa-dev and libeigen3-dev"
						   : "built-in ears, and SOFA files by " + library;
}

std::string DescribeDevices()
{
	std::string const libraries = SonaroHost::Playback::DescribeSoundLibraries();
	return libraries.empty() ? "not played on; PortAudio was not built in with SONARO_WITH_PORTAUDIO, which "
							   "needs portaudio19-dev"
							 : "played on by " + libraries;
}

std::string DescribeServing()
{
#ifdef SONARO_HTTPLIB_VERSION
	return "by cpp-httplib " SONARO_HTTPLIB_VERSION;
#else
	return "not built in; cpp-httplib is needed with SONARO_WITH_SERVE, from libcpp-httplib-dev";
#endif
}

// The version, and what of the optional parts was built in.
std::string DescribeVersion()
{
	using namespace dsp::stretch::omega;
	std::string const libraries = SonaroHost::DescribeMovieLibraries();
	bool const hasRubberBand = IsOmegaEngineKindBuiltIn(OmegaEngineKind::kRubberBand);
	return "sonaro " SONARO_VERSION "\nmovies: " +
		   (libraries.empty()
				   ? "not read; libav is not installed, or was not built in with SONARO_WITH_LIBAV, which "
					 "needs libavformat-dev, libavcodec-dev and libswresample-dev"
				   : "read by " + libraries) +
		   "\neffects: " + DescribeEffects() + "\nsound devices: " + DescribeDevices() +
		   "\nserving: " + DescribeServing() + "\nlisteners: " + DescribeListeners() +
		   (hasRubberBand ? "\nstretching: by the Rubber Band Library as well (GPL)" : "");
}

constexpr char const* kFooter =
	"\"sonaro COMMAND --help\" describes a command and its options.\n"
	"\n"
	"Exit codes:\n"
	"  0  Success\n"
	"  1  An input or output error, or a problem that --strict does not accept\n"
	"  2  Wrong usage: an option or argument is not valid, by itself or for this input\n"
	"  3  Media or effects of a timeline are missing: the output is written, with silence or without\n"
	"     the effect in their place; or nothing in the timeline is heard: nothing is written\n"
	"\n"
	"Environment:\n"
	"  LV2_PATH  The folders in which LV2 plugins are looked for, separated by colons (default: the usual "
	"ones)\n"
	"  TMPDIR    The folder for temporary files, such as the unpacked media of bundles (default: /tmp)";

constexpr char const* kEmptyValue = "the value is empty; give one, or leave the option out";

// An empty value is mostly a variable of a script that has none, so it does not pass for an option that is left out.
void RefuseEmptyValues(CLI::App const& inParser)
{
	for (CLI::Option const* const option : inParser.get_options())
	{
		if (option->nonpositional() && std::ranges::count(option->results(), "") > 0)
		{
			throw CLI::ValidationError(option->get_name(), kEmptyValue);
		}
	}
}

// The parser would take the next word for a value that is empty.
void RefuseEmptyWords(std::vector<std::string> const& inArguments)
{
	auto const end = std::ranges::find(inArguments, "--");
	auto const isEmpty = [](std::string const& inWord)
	{ return inWord.starts_with("--") && inWord.find('=') == inWord.size() - 1; };
	if (auto const found = std::find_if(inArguments.begin(), end, isEmpty); found != end)
	{
		throw CLI::ValidationError(found->substr(0, found->size() - 1), kEmptyValue);
	}
}

int RunCommand(Command& ioCommand)
{
	try
	{
		return ioCommand.Run();
	}
	catch (SonaroHost::NoSoundError const& error)
	{
		HostError::Parts parts = error.GetParts();
		bool const isStream = parts.mFile.empty();
		parts.mRemedy += (parts.mRemedy.empty() ? "" : "; ") + ioCommand.DescribeInputs() +
						 (isStream ? ", timelines only from files" : "");
		throw HostError(error.GetKind(), std::move(parts));
	}
}

} // namespace

Program::Program()
	: mParser("Renders the sound of timelines and sound files, exact to the sample.", "sonaro")
{
	mParser.set_version_flag("--version", &DescribeVersion);
	AddFeaturesFlag();
	mParser.require_subcommand(0, 1);
	mParser.footer(kFooter);
	for (auto* const make :
		{&MakeRenderCommand, &MakePlayCommand, &MakeWaveformCommand, &MakeLoudnessCommand, &MakeInfoCommand,
			&MakeGraphCommand, &MakeEffectsCommand, &MakeServeCommand, &MakePlanCommand, &MakeJoinCommand})
	{
		mCommands.push_back(make(mParser));
	}
}

// The list is printed in place of a command.
void Program::AddFeaturesFlag()
{
	CLI::Option* const features = mParser.add_flag("--features", mListsFeatures,
		"List what this build can do: formats, layouts, optional parts and the versions of libraries");
	mParser.add_flag("--json", mIsJson, "Print the list of --features as JSON")->needs(features);
}

void Program::Parse(std::vector<std::string> inArguments)
{
	RefuseEmptyWords(inArguments);
	// The parser takes them from the end.
	std::ranges::reverse(inArguments);
	mParser.parse(std::move(inArguments));
	auto const commands = mParser.get_subcommands();
	if (mListsFeatures && !commands.empty())
	{
		throw CLI::ValidationError("--features", "stands by itself; leave the command out");
	}
	if (commands.empty() && !mListsFeatures)
	{
		throw CLI::RequiredError::Subcommand(1);
	}
	std::ranges::for_each(commands, [](CLI::App const* inCommand) { RefuseEmptyValues(*inCommand); });
}

int Program::Run(std::vector<std::string> inArguments)
{
	try
	{
		Parse(std::move(inArguments));
	}
	catch (CLI::Success const& request)
	{
		// Help or the version.
		std::ostringstream text;
		int const code = mParser.exit(request, text, text);
		PrintResult(text.str());
		return code;
	}
	catch (CLI::ParseError const& error)
	{
		SonaroHost::Refuse(DescribeUsageError(mParser, error));
	}
	if (mListsFeatures)
	{
		PrintResult(mIsJson ? ListFeaturesForMachines() : ListFeaturesForPeople());
		return kExitSuccess;
	}
	auto const chosen =
		std::ranges::find_if(mCommands, [](auto const& inCommand) { return inCommand->IsChosen(); });
	return chosen == mCommands.end() ? kExitUsage : RunCommand(**chosen);
}

} // namespace SonaroCommand
