#pragma once

#include "OtioSequence/Survey/ClipMedia.h"
#include "OtioSequence/Survey/Layouts.h"
#include "OtioSequence/Survey/Ranges.h"
#include "Scope.h"

#include "SonaroHost/OtioSequence/TimelineSequence.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// What all makers of one sequence share.
struct MakerContext
{
	void Tell(Note::Kind inKind, std::string const& inPlace, std::string inText)
	{
		mResult.mNotes.push_back({inKind, inPlace, std::move(inText)});
	}
	// A note for the whole file, at the first of its places.
	void TellOnce(Note::Kind inKind, std::string const& inPlace, std::string const& inText)
	{
		auto const isSame = [&inText](Note const& inNote) { return inNote.mText == inText; };
		if (std::ranges::none_of(mResult.mNotes, isSame))
		{
			Tell(inKind, inPlace, inText);
		}
	}

	TimelineOptions const& mOptions;
	Item const* mTimelineStack;
	ClipMediaTable& mMedia;
	Ranges& mRanges;
	Layouts& mLayouts;
	// Notes, rows, markers.
	TimelineSequence& mResult;
	// Makes the sequence within a track or a stack, of a multicam stack that of each angle. It is called through here, since
	// the makers of items stand below those of sequences.
	std::function<std::vector<std::shared_ptr<Sequence::Description const>>(
		ItemView const& inItem, Scope const& inScope, SN::AudioChannelLayout const& inLayout)>
		mMakeNested;
};

} // namespace SonaroHost::Otio
