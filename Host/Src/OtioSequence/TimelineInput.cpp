#include "SonaroHost/OtioSequence/TimelineInput.h"

#include "Otio/PlaceNames.h"
#include "OtioSequence/Survey/MediaList.h"

#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/OtioSequence/TimelineMaker.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace SonaroHost::Otio
{

bool IsTimelinePath(std::filesystem::path const& inPath)
{
	// The name of a folder may end in a slash.
	std::filesystem::path const path = inPath.has_filename() ? inPath : inPath.parent_path();
	std::string ending = path.extension().string();
	std::transform(ending.begin(), ending.end(), ending.begin(),
		[](unsigned char inCharacter) { return static_cast<char>(std::tolower(inCharacter)); });
	return ending == ".otio" || ending == ".otioz" || ending == ".otiod";
}

TimelineInput::TimelineInput(
	std::filesystem::path const& inPath, std::vector<std::filesystem::path> inMediaFolders)
	: mPath(inPath),
	  mFile(inPath),
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
	PlaceNames(GetTimeline()).Name(mNotes);
}

std::vector<std::filesystem::path> TimelineInput::ListMedia() const
{
	MediaList list(mFinder, mMedia);
	for (Timeline const& timeline : mFile.GetDocument().mTimelines)
	{
		list.Add(timeline);
	}
	return {list.GetPaths().begin(), list.GetPaths().end()};
}

TimelineSequence TimelineInput::MakeSequence(TimelineOptions const& inOptions)
{
	TimelineSequence sequence = MakeTimelineSequence(GetTimeline(), mFinder, mMedia, inOptions);
	sequence.mFile = mPath;
	PlaceNames(GetTimeline()).Name(sequence.mNotes);
	return sequence;
}

} // namespace SonaroHost::Otio
