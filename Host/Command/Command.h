#pragma once

#include "SonaroHost/Base/HostError.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace SonaroCommand
{

struct JoinedPlan;

// What the program ends with.
enum ExitCode : int
{
	kExitSuccess = 0,
	// The input or the output failed.
	kExitFailure = 1,
	// Wrong usage.
	kExitUsage = 2,
	// Done, but with silence for media that are missing; or not done, since nothing of a timeline is heard.
	kExitMissing = 3,
};

inline ExitCode GetExitCode(SonaroHost::HostError::Kind inKind)
{
	using Kind = SonaroHost::HostError::Kind;
	return inKind == Kind::kRequest        ? kExitUsage
		   : inKind == Kind::kNothingHeard ? kExitMissing
										   : kExitFailure;
}

// One of the program's commands: "sonaro NAME ...". Its constructor declares the options to the parser.
class Command
{
public:
	virtual ~Command() = default;
	Command(Command const&) = delete;
	Command& operator=(Command const&) = delete;

	// Whether the command line named it.
	bool IsChosen() const { return mParser->parsed(); }

	// Does it, once its options were parsed. Throws a HostError.
	virtual int Run() = 0;

	// What it takes, for those who gave something else: "graph draws timelines (.otio, .otioz, .otiod)".
	virtual std::string DescribeInputs() const
	{
		return mParser->get_name() + " accepts sound files (such as WAV, AIFF, FLAC, Ogg and MP3), movies "
									 "(such as MOV, MP4, MKV and "
									 "MXF) and timelines (.otio, .otioz, .otiod)";
	}

protected:
	Command(CLI::App& ioProgram, char const* inName, char const* inDescription)
		: mParser(ioProgram.add_subcommand(inName, inDescription))
	{
	}

	CLI::App& GetParser() { return *mParser; }

	// inValue: what stands for the option's value in --help.
	template <class T>
	CLI::Option* Add(char const* inNames, T& outValue, char const* inValue, char const* inText)
	{
		return mParser->add_option(inNames, outValue, inText)->option_text(inValue);
	}
	void AddFlag(char const* inName, bool& outValue, char const* inText)
	{
		mParser->add_flag(inName, outValue, inText);
	}

private:
	CLI::App* mParser;
};

// "sonaro effects [WHAT]": which plugins are installed.
std::unique_ptr<Command> MakeEffectsCommand(CLI::App& ioProgram);
// "sonaro graph INPUT -o OUTPUT": draws the engine's graph of a timeline.
std::unique_ptr<Command> MakeGraphCommand(CLI::App& ioProgram);
// "sonaro info INPUT": what a sound file or a timeline is.
std::unique_ptr<Command> MakeInfoCommand(CLI::App& ioProgram);
// "sonaro join PLAN -o OUTPUT": joins the rendered pieces of a plan.
std::unique_ptr<Command> MakeJoinCommand(CLI::App& ioProgram);
// "sonaro render" of a timeline whose pieces are rendered already.
std::unique_ptr<Command> MakeJoiningCommand(CLI::App& ioProgram, std::shared_ptr<JoinedPlan const> inJoined);
// "sonaro loudness INPUT ...": how loud sound files, movies and timelines are.
std::unique_ptr<Command> MakeLoudnessCommand(CLI::App& ioProgram);
// "sonaro plan INPUT -o PLAN": plans the render of a timeline in pieces.
std::unique_ptr<Command> MakePlanCommand(CLI::App& ioProgram);
// "sonaro play INPUT": plays a sound file, a movie or a timeline.
std::unique_ptr<Command> MakePlayCommand(CLI::App& ioProgram);
// "sonaro render INPUT ... -o OUTPUT": renders sound files as the clips of a track, or a timeline.
std::unique_ptr<Command> MakeRenderCommand(CLI::App& ioProgram);
// "sonaro serve INPUT": serves a timeline to browsers.
std::unique_ptr<Command> MakeServeCommand(CLI::App& ioProgram);
// "sonaro waveform INPUT -o OUTPUT": draws the waveform of a sound file or a timeline, or writes it for other programs.
std::unique_ptr<Command> MakeWaveformCommand(CLI::App& ioProgram);

} // namespace SonaroCommand
