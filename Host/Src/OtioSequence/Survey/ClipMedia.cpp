#include "ClipMedia.h"

#include "Media/MovieFile.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/NoSoundError.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

ClipMedia MakeSilent(std::filesystem::path inPath, std::string inReason, bool inIsMissing)
{
	ClipMedia media;
	media.mPath = std::move(inPath);
	media.mWhySilent = std::move(inReason);
	media.mIsMissing = inIsMissing;
	return media;
}

// Of a clip without a file.
ClipMedia DescribeSilence(MediaReference const* inReference)
{
	switch (inReference ? inReference->mKind : MediaReference::Kind::kMissing)
	{
	case MediaReference::Kind::kUnknown:
		return MakeSilent({}, "media of schema " + inReference->mSchema + " cannot be read", true);
	case MediaReference::Kind::kGenerator:
		return MakeSilent({}, "generators are not rendered", false);
	case MediaReference::Kind::kImageSequence:
		return MakeSilent({}, "image sequences have no sound", false);
	default:
		return MakeSilent({}, "the clip has no media", true);
	}
}

// Whether a clip has all of its file, and as it is.
bool TakesWhole(Clip const& inClip)
{
	MixSettings const& settings = inClip.GetSettings();
	return settings.mChannels.empty() && settings.mForeign.mFirstChannels == 0 &&
		   std::ranges::none_of(
			   inClip.mEffects, [](Effect const& inEffect) { return inEffect.mDenoise != nullptr; });
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
	return *place->second;
}

std::shared_ptr<ClipMedia const> ClipMediaTable::Resolve(Clip const& inClip)
{
	MediaReference const* const reference = inClip.FindActiveMedia();
	std::shared_ptr<ClipMedia const> media = reference && reference->mKind == MediaReference::Kind::kExternal
												 ? ResolveFile(inClip, *reference)
												 : std::make_shared<ClipMedia>(DescribeSilence(reference));
	if (!media->mMedia)
	{
		std::string const place = media->mPath.empty() ? std::string() : QuotePath(media->mPath) + " ";
		mNotes.push_back({media->mIsMissing ? Note::Kind::kIgnored : Note::Kind::kRemark,
			reference ? reference->mPlace : inClip.mPlace,
			place + media->mWhySilent + "; the clip is silent"});
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
	if (!ioMedia.mChannels.empty())
	{
		ioMedia.mLayout = MakeLayoutOfChannels(static_cast<unsigned>(ioMedia.mChannels.size()));
	}
}

std::shared_ptr<ClipMedia const> ClipMediaTable::ResolveFile(
	Clip const& inClip, MediaReference const& inReference)
{
	unsigned const stream = inClip.GetSettings().mStream;
	auto const [place, isNew] = mOpened[inReference.mTargetUrl].try_emplace(stream);
	File& file = place->second;
	if (isNew)
	{
		file = Open(inReference.mTargetUrl, stream);
		file.mWhole = std::make_shared<ClipMedia>(TakeWhole(file));
	}
	if (!file.mWhole->mMedia)
	{
		return file.mWhole;
	}
	TellOfFile(file, inReference.mPlace);
	if (TakesWhole(inClip))
	{
		return file.mWhole;
	}
	auto media = std::make_shared<ClipMedia>(*file.mWhole);
	ReduceNoise(inClip, *media);
	ChooseChannels(inClip, *media);
	return media;
}

ClipMedia ClipMediaTable::TakeWhole(File const& inFile)
{
	FoundMedia const& found = inFile.mFound;
	if (!inFile.mMedia)
	{
		return MakeSilent(found.mShownPath, found.mWhyMissing, !inFile.mIsSilent);
	}
	ClipMedia media;
	media.mPath = found.mShownPath;
	media.mMedia = inFile.mMedia;
	media.mFile = {found.mPath, inFile.mStream};
	media.mLayout = inFile.mMedia->mLayout;
	if (inFile.mInfo && inFile.mInfo->mStart)
	{
		auto const& start = inFile.mInfo->mStart;
		media.mStart = Ratio(start->mUnits) * Ratio(start->mRateDivisor, start->mRate);
		media.mStartText = start->mText;
	}
	return media;
}

void ClipMediaTable::TellOfFile(File const& inFile, std::string const& inPlace)
{
	FoundMedia const& found = inFile.mFound;
	if (!found.mRemark.empty())
	{
		mNotes.push_back({found.mIsGuess ? Note::Kind::kGuess : Note::Kind::kRemark, inPlace, found.mRemark});
	}
	if (!inFile.mInfo)
	{
		return;
	}
	for (std::string const& remark : inFile.mInfo->mRemarks)
	{
		mNotes.push_back({Note::Kind::kRemark, inPlace, QuotePath(found.mShownPath) + ": " + remark});
	}
	if (auto stretches = inFile.mInfo->mDamage->Get(); !stretches.empty())
	{
		DamagedMedia const damaged{found.mShownPath, inFile.mInfo->mSampleRate, std::move(stretches)};
		mNotes.push_back(
			{Note::Kind::kIgnored, inPlace, QuotePath(found.mShownPath) + " " + DescribeDamage(damaged)});
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
		ioFile.mInfo = mFiles.FindInfo(found.mShownPath, ioFile.mStream);
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
