#include "SonaroHost/OtioSequence/TimelineSequence.h"

#include <algorithm>
#include <iterator>

namespace SonaroHost::Otio
{

void DropRows(TimelineSequence& ioSequence)
{
	ioSequence.mClips = std::vector<ClipRow>();
	ioSequence.mTracks = std::vector<TrackRow>();
	ioSequence.mAngles = std::vector<AngleRow>();
}

std::vector<Note> ListMissingEffects(std::vector<Note> const& inNotes)
{
	std::vector<Note> missing;
	std::ranges::copy_if(inNotes, std::back_inserter(missing),
		[](Note const& inNote) { return inNote.mKind == Note::Kind::kMissingEffect; });
	return missing;
}

bool HasGuesses(std::vector<Note> const& inNotes)
{
	return std::ranges::any_of(
		inNotes, [](Note const& inNote) { return inNote.mKind != Note::Kind::kRemark; });
}

} // namespace SonaroHost::Otio
