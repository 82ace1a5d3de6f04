#include "SonaroHost/OtioSequence/TimelineSequence.h"

#include <algorithm>

namespace SonaroHost::Otio
{

void DropRows(TimelineSequence& ioSequence)
{
	ioSequence.mClips = std::vector<ClipRow>();
	ioSequence.mTracks = std::vector<TrackRow>();
}

bool HasGuesses(std::vector<Note> const& inNotes)
{
	return std::ranges::any_of(
		inNotes, [](Note const& inNote) { return inNote.mKind != Note::Kind::kRemark; });
}

} // namespace SonaroHost::Otio
