#include "ClipMedia.h"

#include "Files/SystemFiles.h"
#include "Media/MovieFile.h"
#include "SonaroHost/Base/HostError.h"

#include <utility>

namespace SonaroHost::Otio
{

namespace
{

ClipMedia MakeMissing(std::filesystem::path inPath, std::string inReason)
{
	return {nullptr, std::move(inPath), {}, std::move(inReason), true};
}

} // namespace

ClipMedia const& ClipMediaTable::Get(Clip const& inClip)
{
	auto const [place, isNew] = mClips.try_emplace(&inClip);
	if (isNew)
	{
		place->second = Resolve(inClip);
	}
	return place->second;
}

ClipMedia ClipMediaTable::Resolve(Clip const& inClip)
{
	MediaReference const* const reference = inClip.FindActiveMedia();
	MediaReference::Kind const kind = reference ? reference->mKind : MediaReference::Kind::kMissing;
	ClipMedia media;
	switch (kind)
	{
	case MediaReference::Kind::kExternal:
		media = ResolveFile(*reference);
		break;
	case MediaReference::Kind::kMissing:
		media = MakeMissing({}, "the clip has no media");
		break;
	case MediaReference::Kind::kUnknown:
		media = MakeMissing({}, "media of schema " + reference->mSchema + " cannot be read");
		break;
	case MediaReference::Kind::kGenerator:
		media.mWhySilent = "generators are not rendered";
		break;
	case MediaReference::Kind::kImageSequence:
		media.mWhySilent = "image sequences have no sound";
		break;
	}
	if (media.mMedia)
	{
		ChooseChannels(inClip, media);
	}
	else
	{
		std::string const place = media.mPath.empty() ? std::string() : QuotePath(media.mPath) + " ";
		mNotes.push_back({media.mIsMissing ? Note::Kind::kIgnored : Note::Kind::kRemark,
			reference ? reference->mPlace : inClip.mPlace,
			place + media.mWhySilent + "; the clip is silent"});
	}
	return media;
}

void ClipMediaTable::ChooseChannels(Clip const& inClip, ClipMedia& ioMedia)
{
	std::size_t const count = ioMedia.mMedia->mLayout.size();
	std::size_t const first = inClip.GetSettings().mForeign.mFirstChannels;
	if (first > 0 && first < count)
	{
		mNotes.push_back({Note::Kind::kLevelNotRead, inClip.mPlace,
			"another program selects only the first " + std::to_string(first) + " of the " +
				std::to_string(count) +
				" channels; all are heard; to select channels, set \"channels\" in metadata.sonaro"});
	}
	for (unsigned const channel : inClip.GetSettings().mChannels)
	{
		if (channel > count)
		{
			mNotes.push_back({Note::Kind::kIgnored, inClip.mPlace,
				"\"channels\" lists channel " + std::to_string(channel) + ", but the media have only " +
					std::to_string(count) + "; \"channels\" is ignored"});
			ioMedia.mChannels.clear();
			return;
		}
		ioMedia.mChannels.push_back(channel - 1);
	}
}

ClipMedia ClipMediaTable::ResolveFile(MediaReference const& inReference)
{
	auto const [place, isNew] = mOpened.try_emplace(inReference.mTargetUrl);
	if (isNew)
	{
		place->second = Open(inReference.mTargetUrl);
	}
	FoundMedia const& found = place->second.mFound;
	if (!found.IsFound())
	{
		return MakeMissing(found.mShownPath, found.mWhyMissing);
	}
	if (!found.mRemark.empty())
	{
		mNotes.push_back(
			{found.mIsGuess ? Note::Kind::kGuess : Note::Kind::kRemark, inReference.mPlace, found.mRemark});
	}
	ClipMedia media;
	media.mPath = found.mShownPath;
	media.mMedia = place->second.mMedia;
	return media;
}

ClipMediaTable::File ClipMediaTable::Open(std::string const& inUrl)
{
	File file;
	file.mFound = mFinder.Find(inUrl);
	bool const isThere = file.mFound.IsFound();
	if (isThere)
	{
		Read(file);
	}
	if (!file.mMedia && (isThere ? IsMovieFile(file.mFound.mPath) : HasMovieEnding(file.mFound.mPath)))
	{
		TakeSound(inUrl, file);
	}
	return file;
}

void ClipMediaTable::TakeSound(std::string const& inUrl, File& ioFile)
{
	FoundMedia& movie = ioFile.mFound;
	if (auto const path = mFinder.FindSound(inUrl))
	{
		File sound;
		sound.mFound.mPath = *path;
		sound.mFound.mShownPath = mFinder.GetShown(*path);
		sound.mFound.mRemark = QuotePath(movie.mShownPath) + " is a movie, whose audio is not supported; " +
							   QuotePath(sound.mFound.mShownPath) + " is used instead";
		sound.mFound.mIsGuess = true;
		Read(sound);
		if (sound.mMedia)
		{
			ioFile = std::move(sound);
			return;
		}
	}
	movie.mWhyMissing = (IsThere(movie.mPath) ? "is a movie, and movie audio is not supported"
											  : movie.mWhyMissing + ", and movie audio is not supported") +
						"; export it as a WAV file of the same name, next to the movie or in a media folder";
}

void ClipMediaTable::Read(File& ioFile)
{
	FoundMedia& found = ioFile.mFound;
	try
	{
		ioFile.mMedia = mFiles.Get(found.mPath, found.mShownPath);
	}
	catch (HostError const& error)
	{
		HostError::Parts const& parts = error.GetParts();
		found.mWhyMissing = parts.mReason + (parts.mRemedy.empty() ? "" : "; " + parts.mRemedy);
	}
}

} // namespace SonaroHost::Otio
