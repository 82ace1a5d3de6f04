#pragma once

#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/Otio/Note.h"

#include <string_view>
#include <vector>

namespace SonaroHost::Otio
{

// Finds the clip and the track that a place of a timeline lies in, for people who know these by their names.
class PlaceNames
{
public:
	// inTimeline outlives this object.
	explicit PlaceNames(Timeline const& inTimeline)
		: mTimeline(inTimeline)
	{
	}

	// Fills them in for each note that has neither.
	void Name(std::vector<Note>& ioNotes) const;

private:
	void Name(Note& ioNote) const;

	Timeline const& mTimeline;
};

} // namespace SonaroHost::Otio
