#include "SequenceShrinking.h"

#include "NaiveSequence.h"
#include "SonaroHost/Base/ChannelLayouts.h"

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

std::string Describe(Fader const& inFader)
{
	std::string const gain = !inFader.mGain ? "" : inFader.mGain->IsEmpty() ? " gain" : " gain by a curve";
	return gain + (!inFader.mMute ? "" : inFader.mMute->IsEmpty() ? " mute" : " mute by a curve");
}

std::string Describe(Chain const& inChain)
{
	std::string text;
	for (Stage const& stage : inChain.mStages)
	{
		if (auto const* const fader = std::get_if<Fader>(&stage))
		{
			text += " | fader" + Describe(*fader);
		}
		else if (auto const* const send = std::get_if<Send>(&stage))
		{
			text += " | send to " + std::to_string(send->mSubmix) + (send->mPan ? " panned" : "") +
					Describe(send->mLevel);
		}
		else if (auto const* const effect = std::get_if<Effect>(&stage))
		{
			text += " | effect " + effect->mName;
		}
	}
	return text + (inChain.mPan ? " | pan\n" : "\n");
}

template <class Strip>
std::string DescribeStrip(Strip const& inStrip)
{
	bool const isSubmix = inStrip.mOutput.mKind == Output::Kind::eSubmix;
	bool const isNone = inStrip.mOutput.mKind == Output::Kind::eNone;
	bool const isMuted = inStrip.mMute && inStrip.mMute->Get() != 0;
	return "  " + inStrip.mName + ", " + GetLayoutName(inStrip.mLayout) +
		   (isSubmix    ? ", to submix " + std::to_string(inStrip.mOutput.mSubmix)
			   : isNone ? ", to nothing"
						: "") +
		   (isMuted ? ", muted" : "") + Describe(inStrip.mChain);
}

std::string DescribeContent(Item const& inItem, SN::FrameRate const& inFrameRate)
{
	if (auto const* const nest = std::get_if<Nest>(&inItem.mContent))
	{
		return nest->mSequence->mName + " from " + std::to_string(GetNearestFrame(nest->mStart, inFrameRate));
	}
	auto const& clip = std::get<Clip>(inItem.mContent);
	std::string text = std::to_string(clip.mMedia->mFrames) + " frames " +
					   GetLayoutName(clip.mMedia->mLayout) + " from " + std::to_string(clip.mFirstFrame);
	for (unsigned const channel : clip.mChannels)
	{
		text += ", channel " + std::to_string(channel);
	}
	return text;
}

std::string DescribeOne(Description const& inSequence, SN::FrameRate const& inFrameRate)
{
	auto const toFrame = [&](SN::TickTime const& inTime) { return GetNearestFrame(inTime, inFrameRate); };
	std::ostringstream text;
	text << inSequence.mName << ", " << GetLayoutName(inSequence.mLayout) << "\n";
	for (Track const& track : inSequence.mTracks)
	{
		text << DescribeStrip(track);
		for (Item const& item : track.mItems)
		{
			text << "    " << item.mName << " [" << toFrame(item.mStart) << ", " << toFrame(item.mEnd)
				 << ") of " << DescribeContent(item, inFrameRate) << ", speed " << item.mSpeed << ", fades "
				 << toFrame(item.mFadeIn.mLength) << " and " << toFrame(item.mFadeOut.mLength)
				 << Describe(item.mChain);
		}
		for (Crossfade const& crossfade : track.mCrossfades)
		{
			text << "    crossfade from " << crossfade.mOutgoing << ", " << toFrame(crossfade.mBefore)
				 << " + " << toFrame(crossfade.mAfter) << "\n";
		}
	}
	for (Submix const& submix : inSequence.mSubmixes)
	{
		text << DescribeStrip(submix);
	}
	text << "  master" << Describe(inSequence.mMaster);
	return text.str();
}

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
	std::string text = DescribeOne(inSequence, inFrameRate);
	std::vector<Nested> nested;
	CollectNested(inSequence, nested);
	for (Nested const& one : nested)
	{
		text += DescribeOne(*one, inFrameRate);
	}
	return text;
}

} // namespace SonaroHost::Sequence::Testing
