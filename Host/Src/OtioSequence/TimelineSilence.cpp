#include "TimelineSilence.h"

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Base/NumberText.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace SonaroHost::Otio
{

namespace
{

// Things that are alike, counted, in the order in which they came first: "2 tracks of kind Video", "1 clip (muted)".
class Tally
{
public:
	void Add(std::string const& inNoun, std::string const& inRest)
	{
		auto const found = std::ranges::find_if(mEntries,
			[&](Entry const& inEntry) { return inEntry.mNoun == inNoun && inEntry.mRest == inRest; });
		if (found != mEntries.end())
		{
			++found->mCount;
		}
		else if (mEntries.size() < kMostEntries)
		{
			mEntries.push_back({inNoun, inRest, 1});
		}
		else
		{
			mHasMore = true;
		}
	}

	std::string Describe() const
	{
		std::string text;
		for (Entry const& entry : mEntries)
		{
			text += text.empty() ? "" : ", ";
			text += FormatCount(entry.mCount, entry.mNoun) + entry.mRest;
		}
		return text + (mHasMore ? " and others" : "");
	}

private:
	struct Entry
	{
		std::string mNoun;
		std::string mRest;
		std::size_t mCount;
	};

	// A file may have any number of kinds.
	static constexpr std::size_t kMostEntries = 6;

	std::vector<Entry> mEntries;
	bool mHasMore = false;
};

// " (muted)" of "it is muted".
std::string Bracket(std::string const& inReason)
{
	constexpr std::string_view kStart = "it is ";
	return " (" + (inReason.starts_with(kStart) ? inReason.substr(kStart.size()) : inReason) + ")";
}

bool IsWithin(std::string const& inPlace, std::string const& inOuter)
{
	return inPlace.starts_with(inOuter) &&
		   (inPlace.size() == inOuter.size() || inPlace[inOuter.size()] == '/');
}

// Nothing of whose children is heard, though they themselves are not silent.
class SilentProgramme
{
public:
	SilentProgramme(Stack const& inStack, TimelineSequence const& inSequence)
		: mStack(inStack),
		  mSequence(inSequence)
	{
	}

	std::string Describe()
	{
		for (TrackRow const& row : mSequence.mTracks)
		{
			if (row.mDepth == 0)
			{
				Add(row);
			}
		}
		std::string text = mChildren.Describe();
		if (text.empty())
		{
			return "it has no tracks";
		}
		return text + (mIsAnyMeant ? "" : ", none of kind Audio");
	}

private:
	void Add(TrackRow const& inRow)
	{
		Composable const& child = mStack.mChildren[inRow.mIndex];
		Track const* const track = child.As<Track>();
		if (track && !track->IsAudio())
		{
			mChildren.Add(
				"track", " of kind " + (track->mKind == "Video" ? track->mKind : Quote(track->mKind)));
			return;
		}
		mIsAnyMeant = true;
		std::string const noun = track ? "track" : child.As<Stack>() ? "stack" : "clip";
		std::string const rest = track ? " of kind Audio" : "";
		mChildren.Add(noun, rest + (inRow.mIsHeard ? DescribeClips(inRow) : Bracket(inRow.mReason)));
	}

	std::string DescribeClips(TrackRow const& inRow) const
	{
		Tally clips;
		for (ClipRow const& clip : mSequence.mClips)
		{
			if (IsWithin(clip.mPlace, inRow.mPlace))
			{
				clips.Add("clip", Bracket(clip.mReason));
			}
		}
		std::string const text = clips.Describe();
		return text.empty() ? " without clips" : " with " + text;
	}

	Stack const& mStack;
	TimelineSequence const& mSequence;
	Tally mChildren;
	// Whether there is more than tracks of pictures and the like.
	bool mIsAnyMeant = false;
};

} // namespace

std::string FindWhySilent(Stack const& inStack, TimelineSequence const& inSequence)
{
	bool const isMeant = std::ranges::any_of(
		inSequence.mClips, [](ClipRow const& inRow) { return inRow.mStatus != ClipRow::Status::kSilent; });
	return isMeant ? std::string() : SilentProgramme(inStack, inSequence).Describe();
}

} // namespace SonaroHost::Otio
