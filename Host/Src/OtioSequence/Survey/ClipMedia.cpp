#include "ClipMedia.h"

#include "Files/SystemFiles.h"
#include "Media/MovieFile.h"
#include "SonaroHost/Base/HostError.h"

#include <string>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

ClipMedia MakeMissing(std::filesystem::path inPath, std::string inReason)
{
	ClipMedia media;
	media.mPath = std::move(inPath);
	media.mWhySilent = std::move(inReason);
	media.mIsMissing = true;
	return media;
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
	MediaReference::Kind const kind = reference ? reference->mKind : MediaReference::Kind::eMissing;
	ClipMedia media;
	switch (kind)
	{
	case MediaReference::Kind::eExternal:
		media = ResolveFile(*reference);
		break;
	case MediaReference::Kind::eMissing:
		media = MakeMissing({}, "the clip refers to no media");
		break;
	case MediaReference::Kind::eUnknown:
		media = MakeMissing({}, "media of the schema " + reference->mSchema + " cannot be read");
		break;
	case MediaReference::Kind::eGenerator:
		media.mWhySilent = "what a generator would make is not rendered";
		break;
	case MediaReference::Kind::eImageSequence:
		media.mWhySilent = "pictures have no sound";
		break;
	}
	if (media.mMedia)
	{
		ChooseChannels(inClip, media);
	}
	else
	{
		std::string const place = media.mPath.empty() ? std::string() : QuotePath(media.mPath) + " ";
		mNotes.push_back({media.mIsMissing ? Note::Kind::eIgnored : Note::Kind::eRemark,
			reference ? reference->mPlace : inClip.mPlace, place + media.mWhySilent + "; it is silent"});
	}
	return media;
}

void ClipMediaTable::ChooseChannels(Clip const& inClip, ClipMedia& ioMedia)
{
	std::size_t const count = ioMedia.mMedia->mLayout.size();
	std::size_t const first = inClip.GetSettings().mForeign.mFirstChannels;
	if (first > 0 && first < count)
	{
		mNotes.push_back({Note::Kind::eLevelNotRead, inClip.mPlace,
			"another program takes the first " + std::to_string(first) + " of the " + std::to_string(count) +
				" channels; all are heard unless \"channels\" in metadata.sonaro says otherwise"});
	}
	for (unsigned const channel : inClip.GetSettings().mChannels)
	{
		if (channel > count)
		{
			mNotes.push_back({Note::Kind::eIgnored, inClip.mPlace,
				"\"channels\" asks for channel " + std::to_string(channel) + " of " + std::to_string(count) +
					"; the media's own are taken"});
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
			{found.mIsGuess ? Note::Kind::eGuess : Note::Kind::eRemark, inReference.mPlace, found.mRemark});
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
		sound.mFound.mRemark = QuotePath(movie.mShownPath) + " is a movie, whose sound is not read; " +
							   QuotePath(sound.mFound.mShownPath) + " is taken in its place";
		sound.mFound.mIsGuess = true;
		Read(sound);
		if (sound.mMedia)
		{
			ioFile = std::move(sound);
			return;
		}
	}
	movie.mWhyMissing = (IsThere(movie.mPath) ? "is a movie, and the sound of movies is not read"
											  : movie.mWhyMissing + ", and the sound of movies is not read") +
						"; put its sound into a folder of media as a sound file of the same name";
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
