#include "SequenceShrinking.h"

#include "MemoryMedia.h"
#include "NaiveSequence.h"
#include "SonaroHost/ChannelLayouts.h"

#include <map>
#include <sstream>

namespace SonaroHost::Sequence::Testing
{

namespace
{

template <class T>
std::vector<T> Without(std::vector<T> inList, std::size_t inIndex)
{
	inList.erase(inList.begin() + static_cast<std::ptrdiff_t>(inIndex));
	return inList;
}

// Copies of a description, each changed by one call.
class Variants
{
public:
	explicit Variants(Description const& inOriginal)
		: mOriginal(inOriginal)
	{
	}

	template <class Change>
	void Add(Change&& inChange)
	{
		mVariants.push_back(mOriginal);
		inChange(mVariants.back());
	}

	// inGet: from a description to a chain of it.
	template <class Get>
	void AddSmallerChains(Chain const& inChain, Get&& inGet)
	{
		for (std::size_t index = 0; index < inChain.mStages.size(); ++index)
		{
			Add([&](Description& ioVariant) { inGet(ioVariant).mStages = Without(inChain.mStages, index); });
		}
		if (inChain.mPan)
		{
			Add([&](Description& ioVariant) { inGet(ioVariant).mPan = {}; });
		}
	}

	// inGet: from a description to a track or a submix of it.
	template <class Strip, class Get>
	void AddSimplerStrips(Strip const& inStrip, Get&& inGet)
	{
		AddSmallerChains(
			inStrip.mChain, [&](Description& ioVariant) -> Chain& { return inGet(ioVariant).mChain; });
		if (inStrip.mMute)
		{
			Add([&](Description& ioVariant) { inGet(ioVariant).mMute = {}; });
		}
		if (inStrip.mOutput.mKind == Output::Kind::eSubmix)
		{
			Add(
				[&](Description& ioVariant)
				{
					inGet(ioVariant).mOutput = {};
					inGet(ioVariant).mChain.mPan = {};
				});
		}
	}

	void AddSimplerItems(std::size_t inTrack)
	{
		auto const getTrack = [inTrack](Description& ioVariant) -> Track&
		{ return ioVariant.mTracks[inTrack]; };
		Track const& track = mOriginal.mTracks[inTrack];
		for (std::size_t index = 0; index < track.mCrossfades.size(); ++index)
		{
			Add([&](Description& ioVariant)
				{ getTrack(ioVariant).mCrossfades = Without(track.mCrossfades, index); });
		}
		for (std::size_t index = 0; index < track.mItems.size(); ++index)
		{
			auto const getItem = [&](Description& ioVariant) -> Item&
			{ return getTrack(ioVariant).mItems[index]; };
			if (track.mCrossfades.empty())
			{
				Add([&](Description& ioVariant)
					{ getTrack(ioVariant).mItems = Without(track.mItems, index); });
			}
			if (track.mItems[index].mFadeIn.mLength > SN::kTimeZero)
			{
				Add([&](Description& ioVariant) { getItem(ioVariant).mFadeIn = {}; });
			}
			if (track.mItems[index].mFadeOut.mLength > SN::kTimeZero)
			{
				Add([&](Description& ioVariant) { getItem(ioVariant).mFadeOut = {}; });
			}
			AddSmallerChains(track.mItems[index].mChain,
				[&](Description& ioVariant) -> Chain& { return getItem(ioVariant).mChain; });
		}
	}

	// Only one that nothing leads to.
	void AddWithoutSubmix(std::size_t inSubmix)
	{
		bool isFed = false;
		Description variant = mOriginal;
		variant.mSubmixes = Without(variant.mSubmixes, inSubmix);
		auto const follow = [&](auto& ioStrip)
		{
			auto const moveUp = [&](std::size_t& ioIndex)
			{
				isFed = isFed || ioIndex == inSubmix;
				ioIndex -= ioIndex > inSubmix ? 1 : 0;
			};
			if (ioStrip.mOutput.mKind == Output::Kind::eSubmix)
			{
				moveUp(ioStrip.mOutput.mSubmix);
			}
			for (Stage& stage : ioStrip.mChain.mStages)
			{
				if (auto* const send = std::get_if<Send>(&stage))
				{
					moveUp(send->mSubmix);
				}
			}
		};
		for (Track& track : variant.mTracks)
		{
			follow(track);
		}
		for (Submix& submix : variant.mSubmixes)
		{
			follow(submix);
		}
		if (!isFed)
		{
			mVariants.push_back(std::move(variant));
		}
	}

	std::vector<Description> Run()
	{
		for (std::size_t index = 0; index < mOriginal.mTracks.size(); ++index)
		{
			Add([&](Description& ioVariant) { ioVariant.mTracks = Without(mOriginal.mTracks, index); });
		}
		for (std::size_t index = 0; index < mOriginal.mTracks.size(); ++index)
		{
			AddSimplerItems(index);
			AddSimplerStrips(mOriginal.mTracks[index],
				[index](Description& ioVariant) -> Track& { return ioVariant.mTracks[index]; });
		}
		for (std::size_t index = 0; index < mOriginal.mSubmixes.size(); ++index)
		{
			AddWithoutSubmix(index);
			AddSimplerStrips(mOriginal.mSubmixes[index],
				[index](Description& ioVariant) -> Submix& { return ioVariant.mSubmixes[index]; });
		}
		AddSmallerChains(
			mOriginal.mMaster, [](Description& ioVariant) -> Chain& { return ioVariant.mMaster; });
		return std::move(mVariants);
	}

private:
	Description const& mOriginal;
	std::vector<Description> mVariants;
};

using Nested = std::shared_ptr<Description const>;

void CollectNested(Description const& inSequence, std::vector<Nested>& ioNested)
{
	for (Track const& track : inSequence.mTracks)
	{
		for (Item const& item : track.mItems)
		{
			auto const* const nest = std::get_if<Nest>(&item.mContent);
			if (nest && std::find(ioNested.begin(), ioNested.end(), nest->mSequence) == ioNested.end())
			{
				ioNested.push_back(nest->mSequence);
				CollectNested(*nest->mSequence, ioNested);
			}
		}
	}
}

// Puts one nested sequence in the place of another one, wherever that stands; ioMade keeps what is shared
// shared.
Description Replace(
	Description inSequence, Nested const& inOld, Nested const& inNew, std::map<Nested, Nested>& ioMade)
{
	for (Track& track : inSequence.mTracks)
	{
		for (Item& item : track.mItems)
		{
			if (auto* const nest = std::get_if<Nest>(&item.mContent))
			{
				Nested& made = ioMade[nest->mSequence];
				if (!made)
				{
					made = nest->mSequence == inOld ? inNew
													: std::make_shared<Description const>(
														  Replace(*nest->mSequence, inOld, inNew, ioMade));
				}
				nest->mSequence = made;
			}
		}
	}
	return inSequence;
}

std::vector<Description> GetSmaller(Description const& inSequence)
{
	std::vector<Description> smaller;
	std::vector<Nested> nested;
	CollectNested(inSequence, nested);
	for (Nested const& one : nested)
	{
		smaller.push_back(*one);
	}
	std::vector<Description> variants = Variants(inSequence).Run();
	smaller.insert(smaller.end(), variants.begin(), variants.end());
	for (Nested const& one : nested)
	{
		for (Description& variant : Variants(*one).Run())
		{
			std::map<Nested, Nested> made;
			smaller.push_back(
				Replace(inSequence, one, std::make_shared<Description const>(std::move(variant)), made));
		}
	}
	return smaller;
}

class Writer
{
public:
	explicit Writer(SN::FrameRate const& inFrameRate)
		: mFrameRate(inFrameRate)
	{
	}

	void Write(Description const& inSequence)
	{
		mText << inSequence.mName << ", " << GetLayoutName(inSequence.mLayout);
		if (inSequence.mMixdown)
		{
			mText << ", mixdown " << *inSequence.mMixdown;
		}
		mText << "\n";
		for (Track const& track : inSequence.mTracks)
		{
			Write(track);
			for (Item const& item : track.mItems)
			{
				Write(item);
			}
			for (Crossfade const& crossfade : track.mCrossfades)
			{
				mText << "    crossfade from " << crossfade.mOutgoing << ", " << Frame(crossfade.mBefore)
					  << " + " << Frame(crossfade.mAfter) << "\n";
			}
		}
		for (Submix const& submix : inSequence.mSubmixes)
		{
			Write(submix);
		}
		mText << "  master";
		Write(inSequence.mMaster);
		std::vector<Nested> nested;
		CollectNested(inSequence, nested);
		for (Nested const& one : nested)
		{
			if (std::find(mWritten.begin(), mWritten.end(), one) == mWritten.end())
			{
				mWritten.push_back(one);
				Write(*one);
			}
		}
	}

	std::string GetText() const { return mText.str(); }

private:
	std::int64_t Frame(SN::TickTime const& inTime) const { return GetNearestFrame(inTime, mFrameRate); }

	void Write(Fader const& inFader)
	{
		auto const write = [this](char const* inName, auto const& inParameter)
		{
			if (inParameter)
			{
				mText << inName << (inParameter->IsEmpty() ? "" : " by a curve");
			}
		};
		write(" gain", inFader.mGain);
		write(" mute", inFader.mMute);
	}

	void Write(Chain const& inChain)
	{
		for (Stage const& stage : inChain.mStages)
		{
			if (auto const* const fader = std::get_if<Fader>(&stage))
			{
				mText << " | fader";
				Write(*fader);
			}
			else if (auto const* const send = std::get_if<Send>(&stage))
			{
				mText << " | send to " << send->mSubmix << (send->mPan ? " panned" : "");
				Write(send->mLevel);
			}
			else if (auto const* const effect = std::get_if<Effect>(&stage))
			{
				mText << " | effect " << effect->mName;
			}
		}
		mText << (inChain.mPan ? " | pan\n" : "\n");
	}

	template <class Strip>
	void Write(Strip const& inStrip)
	{
		mText << "  " << inStrip.mName << ", " << GetLayoutName(inStrip.mLayout) << ", to ";
		switch (inStrip.mOutput.mKind)
		{
		case Output::Kind::eMaster:
			mText << "master";
			break;
		case Output::Kind::eSubmix:
			mText << inStrip.mOutput.mSubmix;
			break;
		default:
			mText << "nothing";
		}
		mText << (!inStrip.mMute ? "" : inStrip.mMute->Get() != 0 ? ", muted" : ", not muted");
		Write(inStrip.mChain);
	}

	void Write(Item const& inItem)
	{
		mText << "    " << inItem.mName << " [" << Frame(inItem.mStart) << ", " << Frame(inItem.mEnd)
			  << ") of ";
		if (auto const* const clip = std::get_if<Clip>(&inItem.mContent))
		{
			mText << GetLayoutName(clip->mMedia->mLayout) << " of " << clip->mMedia->mFrames << " from "
				  << clip->mFirstFrame << " channels";
			for (unsigned const channel : clip->mChannels)
			{
				mText << " " << channel;
			}
		}
		else
		{
			auto const& nest = std::get<Nest>(inItem.mContent);
			mText << nest.mSequence->mName << " from " << Frame(nest.mStart);
		}
		mText << ", speed " << inItem.mSpeed << ", fades " << Frame(inItem.mFadeIn.mLength) << ", "
			  << Frame(inItem.mFadeOut.mLength);
		Write(inItem.mChain);
	}

	SN::FrameRate mFrameRate;
	std::ostringstream mText;
	std::vector<Nested> mWritten;
};

} // namespace

Description Shrink(Description inSequence, std::function<bool(Description const&)> const& inFails)
{
	for (bool isSmaller = true; isSmaller;)
	{
		isSmaller = false;
		for (Description& candidate : GetSmaller(inSequence))
		{
			if (inFails(candidate))
			{
				inSequence = std::move(candidate);
				isSmaller = true;
				break;
			}
		}
	}
	return inSequence;
}

std::string Describe(Description const& inSequence, SN::FrameRate const& inFrameRate)
{
	Writer writer(inFrameRate);
	writer.Write(inSequence);
	return writer.GetText();
}

} // namespace SonaroHost::Sequence::Testing
