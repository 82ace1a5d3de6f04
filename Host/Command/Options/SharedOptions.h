#pragma once

#include "SonaroHost/Base/FadeShape.h"
#include "SonaroHost/Base/TimePosition.h"

#include <CLI/CLI.hpp>

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

// How times are written, for help texts.
inline constexpr char const* kTimesHelp =
	"Times are seconds (12.5), minutes (1:02.5), hours (1:00:02.5) or samples (48000s).";

// What an option was given as a time; throws a HostError that names the option.
SonaroHost::TimePosition ParseTime(std::string const& inOption, std::string const& inText);
// Nothing for an empty text.
std::optional<SonaroHost::TimePosition> ParseTimeIfGiven(
	std::string const& inOption, std::string const& inText);

// The options of every command that lays out a timeline: --media and --fades.
void AddTimelineOptions(CLI::App& ioParser, std::vector<std::string>& outMediaFolders, std::string& outFades);

// The shape that --fades names.
SonaroHost::FadeShape ParseFades(std::string const& inName);

// The titles under which --help lists the options of commands that take sound files and timelines.
inline constexpr char const* kForAllInputs = "All inputs";
inline constexpr char const* kForSoundFiles = "Sound files";
inline constexpr char const* kForTimelines = "Timelines";

// Called once a command has all its options: those that are for one kind of input alone by their names, and all
// others are for all inputs.
void GroupByInput(CLI::App& ioParser, std::initializer_list<char const*> inForSoundFiles,
	std::initializer_list<char const*> inForTimelines);

// --stream, which all commands that take movies have; 0 without it.
void AddStreamOption(CLI::App& ioParser, unsigned& outStream);

// Throws a HostError for any option of a group that was given, as "--stems applies only to timelines".
void RefuseGroup(CLI::App& ioParser, char const* inGroup, std::string const& inWhy);

} // namespace SonaroCommand
