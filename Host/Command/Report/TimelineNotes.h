#pragma once

#include "Json.h"
#include "SonaroHost/Otio/Note.h"
#include "SonaroHost/OtioSequence/TimelineReport.h"

#include <cstddef>
#include <string>
#include <vector>

namespace SonaroCommand
{

// Clips whose media are missing for one reason.
struct MissingFile
{
	SonaroHost::Otio::MissingMedia const* mFirst = nullptr;
	std::size_t mClips = 0;
};

// The files come in the order of their first clips. inMissing outlives the result.
std::vector<MissingFile> GroupByFile(std::vector<SonaroHost::Otio::MissingMedia> const& inMissing);

// Texts for messages: what the clip is called, and "'media/a.wav' does not exist".
std::string GetClipLabel(SonaroHost::Otio::MissingMedia const& inMissing);
std::string DescribeReason(SonaroHost::Otio::MissingMedia const& inMissing);

// Warns of levels that are not read, of missing media, and of what was guessed or ignored, in this order; beyond 20
// lines they are only counted.
void WarnOfNotes(std::vector<SonaroHost::Otio::MissingMedia> const& inMissing,
	std::vector<SonaroHost::Otio::Note> const& inNotes);

Json ListMissing(std::vector<SonaroHost::Otio::MissingMedia> const& inMissing);
// Levels that are not read stand first.
Json ListNotes(std::vector<SonaroHost::Otio::Note> const& inNotes);

// The number of places where levels are not read.
std::size_t CountUnreadLevels(std::vector<SonaroHost::Otio::Note> const& inNotes);

} // namespace SonaroCommand
