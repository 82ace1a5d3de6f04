#pragma once

#include "OtioSequence/Survey/ClipMedia.h"
#include "OtioSequence/Survey/Layouts.h"
#include "OtioSequence/Survey/Measures.h"

#include "SonaroHost/OtioSequence/TimelineSequence.h"

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
