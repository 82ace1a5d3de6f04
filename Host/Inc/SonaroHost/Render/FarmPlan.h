#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Files/FileFingerprint.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace SonaroHost
{

// A stretch of a programme that is rendered by itself.
struct FarmPiece
{
	// Frames of the programme.
	ProgrammeRange mRange;
	// About what it costs: seconds of a single plain channel.
	double mCost = 0.0;
};

// How the render of a timeline is shared among processes and machines: pieces that are rendered each by itself and joined
// to the bytes that one render would give, with all that decides them.
struct FarmPlan
{
	// Options and their values as a command line has them: "--normalize" and "-16".
	using Options = std::vector<std::pair<std::string, std::vector<std::string>>>;

	// The file that it was read from, for messages; empty for one that was made.
	std::filesystem::path mPath;
	// The program that pieces have to be rendered and joined by, with its version.
	std::string mProgram;
	// The timeline as the report calls it, and where it lies.
	std::string mInput;
	FileFingerprint mTimeline;
	// Media in the order in which the timeline's clips name them, those that are not there too.
	std::vector<FileFingerprint> mMedia;
	// How many clips of the timeline are silent, since their media are missing or cannot be read.
	std::size_t mMissingClips = 0;
	// How many effects of the timeline are not heard, since there are no plugins for them.
	std::size_t mMissingEffects = 0;
	Options mOptions;
	// Whether pieces carry what the meters of tracks hear.
	bool mHasTracks = false;
	// Frames a second of the render, in Hz.
	int mSampleRate = 0;
	// The channels of the render, 1 to 64.
	unsigned mChannels = 0;
	// Pieces begin at multiples of so many frames from the start of the range on.
	unsigned mBlockFrames = 0;
	// What is rendered of the programme, with its tail.
	ProgrammeRange mRange;
	// Why there is one piece alone; empty where there could be any number.
	std::string mWhyWhole;
	// At least one, in the order of time and without gaps.
	std::vector<FarmPiece> mPieces;
};

// The plan as JSON.
std::string ToText(FarmPlan const& inPlan);
// Throws a HostError that names the file and the place in it.
FarmPlan ReadFarmPlan(std::filesystem::path const& inPath);
// Throws a HostError that names the plan's file and a place in it, a JSON pointer.
[[noreturn]] void RefusePlan(FarmPlan const& inPlan, std::string const& inPlace, std::string const& inReason);
// What pieces know their plan by: a digest of all of it.
std::string GetIdentity(FarmPlan const& inPlan);

} // namespace SonaroHost
