#include "Command.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Effects/EffectLibrary.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "SonaroHost/Media/NoSoundError.h"
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
		   "\neffects: " + DescribeEffects() +
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
	CLI::App program("Renders the sound of timelines and sound files, exact to the sample.", "sonaro");
	program.set_version_flag("--version", &DescribeVersion);
	program.require_subcommand(1);
	program.footer(kFooter);

	std::unique_ptr<Command> const commands[] = {MakeRenderCommand(program), MakeWaveformCommand(program),
		MakeLoudnessCommand(program), MakeInfoCommand(program), MakeGraphCommand(program),
		MakeEffectsCommand(program)};
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
