#include "SequenceShrinking.h"

#include "NaiveSequence.h"
#include "SonaroHost/ChannelLayouts.h"

#include <limits>
#include <map>
#include <sstream>

namespace SonaroHost::Sequence::Testing
{

namespace
{

using Nested = std::shared_ptr<Description const>;

// Counts everything that can be left away, and leaves away the one whose number it was given. What is shared
// stays shared.
class Remover
{
public:
	explicit Remover(std::size_t inNumber)
		: mLeft(inNumber)
	{
	}

	bool HasRemoved() const { return mLeft == kDone; }

	void Visit(Description& ioSequence)
	{
		EraseOne(ioSequence.mTracks);
		for (Track& track : ioSequence.mTracks)
		{
			if (track.mCrossfades.empty())
			{
				EraseOne(track.mItems);
			}
			EraseOne(track.mCrossfades);
			VisitStrip(track);
			for (Item& item : track.mItems)
			{
				VisitItem(item);
			}
		}
		for (Submix& submix : ioSequence.mSubmixes)
		{
			VisitStrip(submix);
		}
		EraseOne(ioSequence.mMaster.mStages);
	}

private:
	static constexpr std::size_t kDone = std::numeric_limits<std::size_t>::max();

	template <class T>
	void EraseOne(std::vector<T>& ioList)
	{
		if (mLeft < ioList.size())
		{
			ioList.erase(ioList.begin() + static_cast<std::ptrdiff_t>(mLeft));
			mLeft = kDone;
		}
		else if (mLeft != kDone)
		{
			mLeft -= ioList.size();
		}
	}

	bool IsNext(bool inIsThere)
	{
		std::vector<bool> one(inIsThere ? 1 : 0);
		EraseOne(one);
		return inIsThere && one.empty();
	}

	template <class Strip>
	void VisitStrip(Strip& ioStrip)
	{
		EraseOne(ioStrip.mChain.mStages);
		ioStrip.mMute = IsNext(ioStrip.mMute != nullptr) ? MuteSwitch() : ioStrip.mMute;
		bool const isRedirected = IsNext(ioStrip.mOutput.mKind == Output::Kind::eSubmix);
		ioStrip.mOutput = isRedirected ? Output() : ioStrip.mOutput;
		if (IsNext(static_cast<bool>(ioStrip.mChain.mPan)) || isRedirected)
		{
			ioStrip.mChain.mPan = {};
		}
	}

	void VisitItem(Item& ioItem)
	{
		EraseOne(ioItem.mChain.mStages);
		ioItem.mChain.mPan =
			IsNext(static_cast<bool>(ioItem.mChain.mPan)) ? NumberParameter() : ioItem.mChain.mPan;
		for (Fade* const fade : {&ioItem.mFadeIn, &ioItem.mFadeOut})
		{
			*fade = IsNext(fade->mLength > SN::kTimeZero) ? Fade() : *fade;
		}
		if (auto* const nest = std::get_if<Nest>(&ioItem.mContent))
		{
			Nested& seen = mSeen[nest->mSequence];
			if (!seen)
			{
				auto const copy = std::make_shared<Description>(*nest->mSequence);
				Visit(*copy);
				seen = copy;
			}
			nest->mSequence = seen;
		}
	}

	std::size_t mLeft;
	std::map<Nested, Nested> mSeen;
};

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

// The first smaller one that still fails, if any.
bool ShrinkOnce(Description& ioSequence, std::function<bool(Description const&)> const& inFails)
{
	std::vector<Nested> nested;
	CollectNested(ioSequence, nested);
	for (Nested const& one : nested)
	{
		if (inFails(*one))
		{
			ioSequence = Description(*one);
			return true;
		}
	}
	for (std::size_t number = 0;; ++number)
	{
		Description smaller = ioSequence;
		Remover remover(number);
		remover.Visit(smaller);
		bool const fails = remover.HasRemoved() && inFails(smaller);
		if (fails)
		{
			ioSequence = std::move(smaller);
		}
		if (fails || !remover.HasRemoved())
		{
			return fails;
		}
	}
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
		mText << inSequence.mName << ", " << GetLayoutName(inSequence.mLayout) << "\n";
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
	}

	std::string GetText() const { return mText.str(); }

private:
	std::int64_t Frame(SN::TickTime const& inTime) const { return GetNearestFrame(inTime, mFrameRate); }

	void Write(Fader const& inFader)
	{
		mText << (!inFader.mGain                ? ""
					 : inFader.mGain->IsEmpty() ? " gain"
												: " gain by a curve")
			  << (!inFader.mMute                ? ""
					 : inFader.mMute->IsEmpty() ? " mute"
												: " mute by a curve");
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
		mText << "  " << inStrip.mName << ", " << GetLayoutName(inStrip.mLayout);
		if (inStrip.mOutput.mKind != Output::Kind::eMaster)
		{
			bool const isSubmix = inStrip.mOutput.mKind == Output::Kind::eSubmix;
			mText << ", to " << (isSubmix ? "submix " + std::to_string(inStrip.mOutput.mSubmix) : "nothing");
		}
		mText << (inStrip.mMute && inStrip.mMute->Get() != 0 ? ", muted" : "");
		Write(inStrip.mChain);
	}

	void Write(Item const& inItem)
	{
		mText << "    " << inItem.mName << " [" << Frame(inItem.mStart) << ", " << Frame(inItem.mEnd)
			  << ") of ";
		if (auto const* const clip = std::get_if<Clip>(&inItem.mContent))
		{
			mText << clip->mMedia->mFrames << " frames " << GetLayoutName(clip->mMedia->mLayout) << " from "
				  << clip->mFirstFrame;
			for (unsigned const channel : clip->mChannels)
			{
				mText << ", channel " << channel;
			}
		}
		else
		{
			auto const& nest = std::get<Nest>(inItem.mContent);
			mText << nest.mSequence->mName << " from " << Frame(nest.mStart);
		}
		mText << ", speed " << inItem.mSpeed << ", fades " << Frame(inItem.mFadeIn.mLength) << " and "
			  << Frame(inItem.mFadeOut.mLength);
		Write(inItem.mChain);
	}

	SN::FrameRate mFrameRate;
	std::ostringstream mText;
};

} // namespace

Description Shrink(Description inSequence, std::function<bool(Description const&)> const& inFails)
{
	while (ShrinkOnce(inSequence, inFails))
	{
	}
	return inSequence;
}

std::string Describe(Description const& inSequence, SN::FrameRate const& inFrameRate)
{
	Writer writer(inFrameRate);
	writer.Write(inSequence);
	std::vector<Nested> nested;
	CollectNested(inSequence, nested);
	for (Nested const& one : nested)
	{
		writer.Write(*one);
	}
	return writer.GetText();
}

} // namespace SonaroHost::Sequence::Testing
