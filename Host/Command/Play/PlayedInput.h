#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/OtioSequence/ProgrammeTimecode.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Render/ClipRenderRequest.h"
#include "SonaroHost/Render/Programme.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

// What is asked to be played.
struct PlayRequest
{
	bool IsTimeline() const;

	std::string mInput;
	std::vector<std::filesystem::path> mMediaFolders;
	SonaroHost::Otio::TimelineOptions mTimeline;
	// Of a sound file.
	unsigned mStream = 0;
	// A file that is played into; empty for none.
	std::filesystem::path mOutput;
};

// A sound file or a timeline, ready to be played, with what its times mean. Its programme reads media that it holds.
//
// Threads  One at a time.
class PlayedInput
{
public:
	enum class Warnings
	{
		kPrint,
		// While the terminal belongs to a screen.
		kNone,
	};

	// Warns of what was found in a timeline. Throws a HostError, also where the output would replace what is played.
	PlayedInput(PlayRequest const& inRequest, Warnings inWarnings);

	SonaroHost::Programme const& GetProgramme() const { return mProgramme; }
	// Whether media or effects are missing.
	bool IsIncomplete() const { return mIsIncomplete; }

	// What --start and --loop mean; these throw a HostError.
	std::int64_t FindStart(std::string const& inText) const;
	SonaroHost::ProgrammeRange FindLoop(std::string const& inText) const;
	// A place for people: timecode where the timeline has a rate, otherwise time.
	std::string FormatPlace(std::int64_t inFrame) const;

private:
	void OpenTimeline(PlayRequest const& inRequest, Warnings inWarnings);
	void OpenFile(PlayRequest const& inRequest);

	// Those of a timeline.
	std::unique_ptr<SonaroHost::Otio::TimelineInput> mTimeline;
	SonaroHost::Otio::TimelineSequence mSequence;
	std::optional<SonaroHost::Otio::ProgrammeTimecode> mTimecode;
	SonaroHost::Programme mProgramme;
	bool mIsIncomplete = false;
};

} // namespace SonaroCommand
