#pragma once

#include "ClipMedia.h"
#include "Layouts.h"
#include "Measures.h"

#include "SonaroHost/Otio/TimelineSequence.h"

#include <string>

namespace SonaroHost::Otio
{

// What all makers of one sequence share.
struct SequenceMaking
{
	void Tell(Note::Kind inKind, std::string const& inPlace, std::string inText)
	{
		mResult.mNotes.push_back({inKind, inPlace, std::move(inText)});
	}

	TimelineOptions const& mOptions;
	Item const* mTimelineStack;
	ClipMediaTable& mMedia;
	Measures& mMeasures;
	Layouts& mLayouts;
	// Notes, rows, markers.
	TimelineSequence& mResult;
};

} // namespace SonaroHost::Otio
