#pragma once

#include <CLI/CLI.hpp>

#include <initializer_list>
#include <string>

namespace SonaroCommand
{

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
