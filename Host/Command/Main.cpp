#include "Command.h"
#include "FeatureList.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Binaural/SofaEars.h"
#include "SonaroHost/Effects/EffectLibrary.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "SonaroHost/Media/NoSoundError.h"
#include "SonaroHost/Playback/SoundDevices.h"
#include "Terminal/Console.h"
#include "Terminal/OperatingSystem.h"
#include "Terminal/StopSignals.h"
#include "Terminal/UsageError.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <sstream>
#include <string>

namespace
{

using namespace SonaroCommand;

int RunCommand(Command& ioCommand)
{
	using SonaroHost::HostError;
	// Whatever a command that was asked to stop ends with, it ends by the signal.
	struct SignalFirst
	{
		~SignalFirst()
		{
			if (StopSignals::GetToken().stop_requested())
			{
				StopSignals::EndProcess();
			}
		}
	} const signalFirst;
	try
	{
		return ioCommand.Run();
	}
	catch (SonaroHost::NoSoundError const& error)
	{
		bool const isStream = error.GetParts().mFile.empty();
		PrintError(std::string(error.what()) + "; " + ioCommand.DescribeInputs() +
				   (isStream ? ", timelines only from files" : ""));
		return kExitFailure;
	}
	catch (HostError const& error)
	{
		PrintError(error.what());
		return GetExitCode(error.GetKind());
	}
	catch (std::bad_alloc const&)
	{
		PrintError("not enough memory");
	}
	catch (std::exception const& error)
	{
		PrintError(error.what());
	}
	return kExitFailure;
}

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

// The list is printed in place of a command.
struct FeaturesFlag
{
	void Add(CLI::App& ioProgram)
	{
		CLI::Option* const features = ioProgram.add_flag("--features", mIsGiven,
			"List what this build can do: formats, layouts, optional parts and the versions of libraries");
		ioProgram.add_flag("--json", mIsJson, "Print the list of --features as JSON")->needs(features);
	}

	bool mIsGiven = false;
	bool mIsJson = false;
};

// An empty value is mostly a variable of a script that has none, so it does not pass for an option that is left out.
void RefuseEmptyValues(CLI::App const& inParser)
{
	for (CLI::Option const* const option : inParser.get_options())
	{
		if (option->nonpositional() && std::ranges::count(option->results(), "") > 0)
		{
			throw CLI::ValidationError(
				option->get_name(), "the value is empty; give one, or leave the option out");
		}
	}
}

// Throws a CLI::ParseError.
void Parse(CLI::App& ioProgram, FeaturesFlag const& inFeatures, int inCount, char** inArguments)
{
	ioProgram.parse(inCount, inArguments);
	auto const commands = ioProgram.get_subcommands();
	if (inFeatures.mIsGiven && !commands.empty())
	{
		throw CLI::ValidationError("--features", "stands by itself; leave the command out");
	}
	if (commands.empty() && !inFeatures.mIsGiven)
	{
		throw CLI::RequiredError::Subcommand(1);
	}
	std::ranges::for_each(commands, [](CLI::App const* inCommand) { RefuseEmptyValues(*inCommand); });
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

bool Print(std::string const& inText)
{
	try
	{
		PrintResult(inText);
		return true;
	}
	catch (SonaroHost::HostError const& error)
	{
		PrintError(error.what());
		return false;
	}
}

} // namespace

int main(int inCount, char** inArguments)
{
	HoldStandardStreams();
	AllowManyFiles();
	MakeFailedWritesErrors();
	StopSignals::Watch();
	SonaroHost::SilenceMovieLibraries();
	FeaturesFlag features;
	CLI::App program("Renders the sound of timelines and sound files, exact to the sample.", "sonaro");
	program.set_version_flag("--version", &DescribeVersion);
	features.Add(program);
	program.require_subcommand(0, 1);
	program.footer(kFooter);

	std::unique_ptr<Command> const commands[] = {MakeRenderCommand(program), MakePlayCommand(program),
		MakeWaveformCommand(program), MakeLoudnessCommand(program), MakeInfoCommand(program),
		MakeGraphCommand(program), MakeEffectsCommand(program), MakeServeCommand(program)};
	try
	{
		Parse(program, features, inCount, inArguments);
	}
	catch (CLI::Success const& request)
	{
		// Help or the version.
		std::ostringstream text;
		int const code = program.exit(request, text, text);
		return Print(text.str()) ? code : kExitFailure;
	}
	catch (CLI::ParseError const& error)
	{
		PrintError(DescribeUsageError(program, error));
		return kExitUsage;
	}
	if (features.mIsGiven)
	{
		bool const isPrinted = Print(features.mIsJson ? ListFeaturesForMachines() : ListFeaturesForPeople());
		return isPrinted ? kExitSuccess : kExitFailure;
	}
	for (auto const& command : commands)
	{
		if (command->IsChosen())
		{
			return RunCommand(*command);
		}
	}
	return kExitUsage;
}
