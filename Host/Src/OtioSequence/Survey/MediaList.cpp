#include "MediaList.h"

#include "Media/MovieFile.h"

#include <optional>
#include <vector>

namespace SonaroHost::Otio
{

void MediaList::Add(Timeline const& inTimeline)
{
	Add(inTimeline.mTracks.mChildren);
}

void MediaList::Add(std::vector<Composable> const& inChildren)
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

void MediaList::Add(Clip const& inClip)
{
	for (MediaReference const& reference : inClip.mMediaReferences)
	{
		bool const isNew =
			reference.mKind == MediaReference::Kind::kExternal && mUrls.insert(reference.mTargetUrl).second;
		if (isNew)
		{
			FoundMedia const found = mFinder.Find(reference.mTargetUrl);
			if (found.IsFound())
			{
				mPaths.insert(found.mPath);
			}
			mPaths.insert(found.mLookedFor.begin(), found.mLookedFor.end());
			// Nothing is taken for a movie whose own sound is heard.
			bool const isHeard = mFiles.FindInfo(found.mShownPath) != nullptr;
			if (!isHeard && (found.IsFound() ? IsMovieFile(found.mPath) : HasMovieEnding(found.mPath)))
			{
				AddSoundOf(reference.mTargetUrl);
			}
		}
	}
}

void MediaList::AddSoundOf(std::string const& inUrl)
{
	if (auto const sound = mFinder.FindSound(inUrl))
	{
		mPaths.insert(*sound);
		return;
	}
	std::vector<std::filesystem::path> const places = mFinder.ListPlacesOfSound(inUrl);
	mPaths.insert(places.begin(), places.end());
}

} // namespace SonaroHost::Otio
