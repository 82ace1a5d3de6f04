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

// Like the version, the list is printed in place of a command.
void AddFeaturesFlag(CLI::App& ioProgram, bool& outIsJson)
{
	// Options are read in the order in which they are added, whatever their order on the command line.
	CLI::Option* const json = ioProgram.add_flag("--json", outIsJson, "Print the list of --features as JSON");
	CLI::Option* const features = ioProgram.add_flag_callback(
		"--features",
		[&outIsJson]
		{
			std::string text = outIsJson ? ListFeaturesForMachines() : ListFeaturesForPeople();
			text.pop_back();
			throw CLI::CallForVersion(text, 0);
		},
		"List what this build can do: formats, layouts, optional parts and the versions of libraries");
	json->needs(features);
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
	bool isJson = false;
	CLI::App program("Renders the sound of timelines and sound files, exact to the sample.", "sonaro");
	program.set_version_flag("--version", &DescribeVersion);
	AddFeaturesFlag(program, isJson);
	program.require_subcommand(1);
	program.footer(kFooter);

	std::unique_ptr<Command> const commands[] = {MakeRenderCommand(program), MakePlayCommand(program),
		MakeWaveformCommand(program), MakeLoudnessCommand(program), MakeInfoCommand(program),
		MakeGraphCommand(program), MakeEffectsCommand(program), MakeServeCommand(program)};
	try
	{
		program.parse(inCount, inArguments);
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
	for (auto const& command : commands)
	{
		if (command->IsChosen())
		{
			return RunCommand(*command);
		}
	}
	return kExitUsage;
}
