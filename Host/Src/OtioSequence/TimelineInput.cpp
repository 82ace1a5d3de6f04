#include "SonaroHost/OtioSequence/TimelineInput.h"

#include "Media/MovieFile.h"
#include "Otio/PlaceNames.h"

#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/OtioSequence/TimelineMaker.h"

#include <set>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

// All media that clips refer to, heard or not, pictures too: the files, and the places where they were looked for
// before.
class MediaList
{
public:
	// Both outlive this object. inFiles: the media that are known by now.
	MediaList(MediaFinder const& inFinder, FileMedia const& inFiles)
		: mFinder(inFinder),
		  mFiles(inFiles)
	{
	}

	void Add(std::vector<Composable> const& inChildren)
	{
		for (Composable const& child : inChildren)
		{
			if (auto const* const clip = child.As<Clip>())
			{
				Add(*clip);
			}
			else if (auto const* const track = child.As<Track>())
			{
				Add(track->mChildren);
			}
			else if (auto const* const stack = child.As<Stack>())
			{
				Add(stack->mChildren);
			}
		}
	}

	std::set<std::filesystem::path> const& GetPaths() const { return mPaths; }

private:
	void Add(Clip const& inClip)
	{
		for (MediaReference const& reference : inClip.mMediaReferences)
		{
			if (reference.mKind == MediaReference::Kind::kExternal &&
				mUrls.insert(reference.mTargetUrl).second)
			{
				AddUrl(reference.mTargetUrl);
			}
		}
	}

	void AddUrl(std::string const& inUrl)
	{
		FoundMedia const found = mFinder.Find(inUrl);
		if (found.IsFound())
		{
			mPaths.insert(found.mPath);
		}
		mPaths.insert(found.mLookedFor.begin(), found.mLookedFor.end());
		// Nothing is taken for a movie whose own sound is heard.
		bool const isHeard = mFiles.FindInfo(found.mShownPath) != nullptr;
		if (isHeard || !(found.IsFound() ? IsMovieFile(found.mPath) : HasMovieEnding(found.mPath)))
		{
			return;
		}
		// The sound file that is taken for a movie's sound, or the places where one would be.
		auto const sound = mFinder.FindSound(inUrl);
		auto const places = sound ? std::vector{*sound} : mFinder.ListPlacesOfSound(inUrl);
		mPaths.insert(places.begin(), places.end());
	}

	MediaFinder const& mFinder;
	FileMedia const& mFiles;
	std::set<std::string> mUrls;
	std::set<std::filesystem::path> mPaths;
};

} // namespace

bool IsTimelinePath(std::filesystem::path const& inPath)
{
	// The name of a folder may end in a slash.
	std::filesystem::path const path = inPath.has_filename() ? inPath : inPath.parent_path();
	std::string const ending = GetLowerEnding(path);
	return ending == ".otio" || ending == ".otioz" || ending == ".otiod";
}

TimelineInput::TimelineInput(std::filesystem::path const& inPath,
	std::vector<std::filesystem::path> inMediaFolders, std::shared_ptr<std::string const> const& inText)
	: mPath(inPath),
	  mFile(inText ? TimelineFile(inPath, *inText) : TimelineFile(inPath)),
	  mFinder(mFile.GetFolder(), std::move(inMediaFolders), mFile.GetShownFolder()),
	  mNotes(mFile.GetDocument().mNotes)
{
	std::size_t const timelines = mFile.GetDocument().mTimelines.size();
	if (timelines > 1)
	{
		mNotes.push_back({Note::Kind::kGuess, GetTimeline().mPlace,
			"the file contains " + std::to_string(timelines) + " timelines; only the first one, " +
				QuoteName(GetTimeline().mName) + ", is used"});
	}
	NamePlaces(GetTimeline(), mNotes);
}

std::vector<std::filesystem::path> TimelineInput::ListMedia() const
{
	MediaList list(mFinder, mMedia);
	for (Timeline const& timeline : mFile.GetDocument().mTimelines)
	{
		list.Add(timeline.mTracks.mChildren);
	}
	return {list.GetPaths().begin(), list.GetPaths().end()};
}

TimelineSequence TimelineInput::MakeSequence(TimelineOptions const& inOptions)
{
	TimelineSequence sequence = MakeTimelineSequence(GetTimeline(), mFinder, mMedia, inOptions);
	sequence.mFile = mPath;
	NamePlaces(GetTimeline(), sequence.mNotes);
	return sequence;
}

} // namespace SonaroHost::Otio
