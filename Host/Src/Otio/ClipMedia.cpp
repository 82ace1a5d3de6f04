#include "ClipMedia.h"

#include "SonaroHost/HostError.h"

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
	auto const [place, isNew] = mFound.try_emplace(inReference.mTargetUrl);
	FoundMedia& found = place->second;
	if (isNew)
	{
		found = mFinder.Find(inReference.mTargetUrl);
	}
	if (!found.IsFound())
	{
		return MakeMissing(found.mPath, found.mWhyMissing);
	}
	if (!found.mRemark.empty())
	{
		mNotes.push_back({Note::Kind::eRemark, inReference.mPlace, found.mRemark});
	}
	try
	{
		ClipMedia media;
		media.mPath = found.mPath;
		media.mMedia = mFiles.Get(found.mPath);
		return media;
	}
	catch (HostError const& error)
	{
		HostError::Parts const& parts = error.GetParts();
		return MakeMissing(found.mPath, parts.mReason + (parts.mRemedy.empty() ? "" : "; " + parts.mRemedy));
	}
}

} // namespace SonaroHost::Otio
