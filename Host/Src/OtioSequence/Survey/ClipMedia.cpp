#include "ClipMedia.h"

#include "Media/MovieFile.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/NoSoundError.h"

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

Denoise MakeDenoise(DenoiseEffect const& inEffect, double inSampleRate)
{
	Ratio const rate = Ratio::FromDouble(inSampleRate);
	Denoise denoise;
	denoise.mReduction = inEffect.mReduction.value_or(denoise.mReduction);
	if (auto const& learn = inEffect.mLearn)
	{
		denoise.mLearn = {(ToSeconds(learn->mStart) * rate).Round(), (ToSeconds(learn->mEnd) * rate).Round()};
	}
	return denoise;
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
		media = ResolveFile(*reference, inClip.GetSettings().mStream);
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
		ReduceNoise(inClip, media);
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

void ClipMediaTable::ReduceNoise(Clip const& inClip, ClipMedia& ioMedia)
{
	for (Effect const& effect : inClip.mEffects)
	{
		if (!effect.mIsEnabled || !effect.mDenoise)
		{
			continue;
		}
		if (ioMedia.mDenoise)
		{
			mNotes.push_back({Note::Kind::kIgnored, effect.mDenoise->mPlace,
				"the noise of the clip is reduced by an effect before this one, which is ignored"});
			continue;
		}
		try
		{
			Denoise const denoise = MakeDenoise(*effect.mDenoise, ioMedia.mMedia->mSampleRate);
			ioMedia.mMedia = mFiles.GetDenoised(ioMedia.mFile, denoise);
			ioMedia.mDenoise = denoise;
		}
		catch (HostError const& error)
		{
			mNotes.push_back({Note::Kind::kMissingEffect, effect.mDenoise->mPlace,
				std::string("an effect is bypassed: ") + error.what()});
		}
	}
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

ClipMedia ClipMediaTable::ResolveFile(MediaReference const& inReference, unsigned inStream)
{
	auto const [place, isNew] = mOpened.try_emplace({inReference.mTargetUrl, inStream});
	if (isNew)
	{
		place->second = Open(inReference.mTargetUrl, inStream);
	}
	FoundMedia const& found = place->second.mFound;
	if (place->second.mIsSilent)
	{
		ClipMedia silence;
		silence.mPath = found.mShownPath;
		silence.mWhySilent = found.mWhyMissing;
		return silence;
	}
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
	media.mFile = {found.mPath, place->second.mStream};
	DescribeFile(place->second, inReference.mPlace, media);
	return media;
}

void ClipMediaTable::DescribeFile(File const& inFile, std::string const& inPlace, ClipMedia& ioMedia)
{
	AudioFileInfo const* const info = mFiles.FindInfo(inFile.mFound.mShownPath, inFile.mStream);
	if (!info)
	{
		return;
	}
	if (auto const& start = info->mStart)
	{
		ioMedia.mStart = Ratio(start->mUnits) * Ratio(start->mRateDivisor, start->mRate);
		ioMedia.mStartText = start->mText;
	}
	for (std::string const& remark : info->mRemarks)
	{
		mNotes.push_back({Note::Kind::kRemark, inPlace, QuotePath(ioMedia.mPath) + ": " + remark});
	}
	DamagedMedia const damaged{ioMedia.mPath, info->mSampleRate, info->mDamage->Get()};
	if (!damaged.mStretches.empty())
	{
		mNotes.push_back(
			{Note::Kind::kIgnored, inPlace, QuotePath(ioMedia.mPath) + " " + DescribeDamage(damaged)});
	}
}

ClipMediaTable::File ClipMediaTable::Open(std::string const& inUrl, unsigned inStream)
{
	File file;
	file.mStream = inStream;
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
		sound.mFound.mRemark = QuotePath(movie.mShownPath) + " " + movie.mWhyMissing + "; using " +
							   QuotePath(sound.mFound.mShownPath);
		sound.mFound.mIsGuess = true;
		Read(sound);
		if (sound.mMedia)
		{
			ioFile = std::move(sound);
			return;
		}
	}
}

void ClipMediaTable::Read(File& ioFile)
{
	FoundMedia& found = ioFile.mFound;
	try
	{
		ioFile.mMedia = mFiles.Get(found.mPath, found.mShownPath, ioFile.mStream);
	}
	catch (SilentMovieError const& error)
	{
		found.mWhyMissing = error.GetParts().mReason;
		ioFile.mIsSilent = true;
	}
	catch (HostError const& error)
	{
		HostError::Parts const& parts = error.GetParts();
		found.mWhyMissing = parts.mReason + (parts.mRemedy.empty() ? "" : "; " + parts.mRemedy);
	}
}

} // namespace SonaroHost::Otio
