#include "SequenceShrinking.h"

#include <algorithm>
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
		bool const isRedirected = IsNext(ioStrip.mOutput.mKind == Output::Kind::kSubmix);
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
			VisitNested(nest->mSequence);
		}
		if (auto* const multicam = std::get_if<Multicam>(&ioItem.mContent))
		{
			EraseOne(multicam->mCuts);
			std::ranges::for_each(multicam->mAngles, [this](Nested& ioAngle) { VisitNested(ioAngle); });
		}
	}

	void VisitNested(Nested& ioSequence)
	{
		Nested& seen = mSeen[ioSequence];
		if (!seen)
		{
			auto const copy = std::make_shared<Description>(*ioSequence);
			Visit(*copy);
			seen = copy;
		}
		ioSequence = seen;
	}

	std::size_t mLeft;
	std::map<Nested, Nested> mSeen;
};

void CollectNested(Description const& inSequence, std::vector<Description const*>& ioNested)
{
	for (Track const& track : inSequence.mTracks)
	{
		for (Item const& item : track.mItems)
		{
			for (Description const* const sequence : ListSequences(item))
			{
				if (std::find(ioNested.begin(), ioNested.end(), sequence) == ioNested.end())
				{
					ioNested.push_back(sequence);
					CollectNested(*sequence, ioNested);
				}
			}
		}
	}
}

// The first smaller one that still fails, if any.
bool ShrinkOnce(Description& ioSequence, std::function<bool(Description const&)> const& inFails)
{
	std::vector<Description const*> nested;
	CollectNested(ioSequence, nested);
	for (Description const* const one : nested)
	{
		if (inFails(*one))
		{
			// A copy of its own: what it stands in goes.
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

} // namespace

Description Shrink(Description inSequence, std::function<bool(Description const&)> const& inFails)
{
	while (ShrinkOnce(inSequence, inFails))
	{
	}
	return inSequence;
}

std::string Describe(GraphReport const& inReport)
{
	std::ostringstream text;
	for (TrackReport const& track : inReport.mTracks)
	{
		text << track.mPlace << " ahead " << track.mAheadFrames << " late " << track.mLatencyFrames
			 << " waits " << track.mWaitFrames << "\n";
	}
	for (ItemReport const& item : inReport.mItems)
	{
		text << item.mTrack << " " << item.mName << " " << item.mFirstFrame << " to " << item.mEndFrame
			 << " late " << item.mLatencyFrames << "\n";
	}
	return text.str();
}

} // namespace SonaroHost::Sequence::Testing
