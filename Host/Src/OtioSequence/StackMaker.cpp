#include "StackMaker.h"

#include "OtioSequence/Item/AngleRows.h"
#include "OtioSequence/Item/ItemEffects.h"
#include "OtioSequence/Item/ItemFades.h"
#include "OtioSequence/Survey/Audibility.h"
#include "TrackMaker.h"

#include "SonaroHost/Otio/Labels.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Otio
{

std::shared_ptr<Sequence::Description> StackMaker::Make()
{
	Begin();
	AddChildren([](ItemView const&) {});
	return std::move(mSequence);
}

std::vector<std::shared_ptr<Sequence::Description const>> StackMaker::MakeAngles()
{
	Begin();
	Sequence::Description const common = *mSequence;
	std::vector<std::shared_ptr<Sequence::Description const>> angles;
	mAngle = 0;
	AddChildren(
		[&](ItemView const& inChild)
		{
			if (inChild.mItem && (!inChild.mTrack || inChild.mTrack->IsAudio()))
			{
				mSequence->mName = GetLabel(inChild);
				angles.push_back(mSequence);
				++*mAngle;
			}
			mSequence = std::make_shared<Sequence::Description>(common);
		});
	return angles;
}

void StackMaker::Begin()
{
	mSequence->mName = mStack.mName;
	mSequence->mLayout = mLayout;
	AddSubmixes();
}

template <class Use>
void StackMaker::AddChildren(Use const& inUse)
{
	auto const silences = FindSilences(mStack);
	for (std::size_t index = 0; index < silences.size(); ++index)
	{
		AddChild(index, mScope.mWhySilent.empty() ? silences[index] : mScope.mWhySilent);
		inUse(ItemView(mStack.mChildren[index]));
	}
}

void StackMaker::AddSubmixes()
{
	CurveTiming const curveTiming{Ratio(), GetStart()};
	for (Submix const& submix : mStack.GetSettings().mSubmixes)
	{
		Sequence::Submix& made = mSequence->mSubmixes.emplace_back();
		made.mName = submix.mName;
		made.mOrigin = mStack.mPlace;
		made.mLayout = mLayout;
		made.mOutput = FindOutput(submix.mOutput);
		for (auto const& effect : submix.mEffects)
		{
			AddEffect(mContext, *effect, mLayout, curveTiming, made.mChain.mStages);
		}
		if (auto const gain =
				submix.mGain ? MakeGain(*submix.mGain, curveTiming) : Sequence::NumberParameter())
		{
			made.mChain.mStages.push_back(Sequence::Fader{gain, {}});
		}
		made.mChain.mPan = MakePanBetween(
			mContext, mLayout, mLayout, submix.mPan ? &*submix.mPan : nullptr, curveTiming, mStack.mPlace);
		if (submix.mMute)
		{
			constexpr int kMuted = 1;
			made.mMute = std::make_shared<Sequence::MuteSwitch::element_type>(kMuted);
		}
	}
}

void StackMaker::AddChild(std::size_t inIndex, std::string const& inWhySilent)
{
	ItemView const child(mStack.mChildren[inIndex]);
	bool const canBeHeard = child.mClip || child.mTrack || child.mStack;
	if (!canBeHeard)
	{
		return;
	}
	TrackRow row = MakeRow(child, inIndex, inWhySilent);
	row.mIsAudio = !child.mTrack || child.mTrack->IsAudio();
	auto& rows = mContext.mResult.mTracks;
	std::size_t const rowIndex = rows.size();
	rows.push_back(row);
	if (child.mTrack && !child.mTrack->IsAudio())
	{
		ItemMaker(mContext, mScope, mLayout).AddMarkersOf(child);
		if (mScope.mWhySilent.empty())
		{
			mContext.Tell(Note::Kind::kRemark, row.mPlace, "the track is not heard: " + inWhySilent);
		}
		return;
	}
	Sequence::Track track;
	track.mName = GetLabel(child);
	track.mOrigin = row.mPlace;
	track.mLayout = row.mLayout;
	AddItems(child, inWhySilent, track);
	if (inWhySilent.empty() && !track.mItems.empty())
	{
		rows[rowIndex].mIsMeasured = true;
		track.mChain = MakeChain(child, row);
		track.mOutput = FindOutput(child.mItem->GetSettings().mOutput);
		mSequence->mTracks.push_back(std::move(track));
	}
}

TrackRow StackMaker::MakeRow(
	ItemView const& inChild, std::size_t inIndex, std::string const& inWhySilent) const
{
	return {inWhySilent.empty(), inWhySilent, inChild.mItem->mName,
		AppendLabel(mScope.mTrack, GetLabel(inChild)), inChild.mItem->mPlace, inIndex, mScope.mDepth,
		inWhySilent.empty() ? Layouts::Limit(mContext.mLayouts.GetInnerWidth(inChild), mLayout) : mLayout};
}

void StackMaker::AddItems(ItemView const& inChild, std::string const& inWhySilent, Sequence::Track& ioTrack)
{
	Scope scope = mScope;
	scope.mWhySilent = inWhySilent;
	if (mAngle && mScope.mAngles)
	{
		scope.mHearing = std::make_shared<Hearing const>(ListPassages(*mScope.mAngles, *mAngle));
	}
	if (IsPlain(inChild))
	{
		scope.mTrack = AppendLabel(mScope.mTrack, GetLabel(inChild));
		ItemMaker(mContext, mScope, ioTrack.mLayout).AddMarkersOf(inChild);
		TrackMaker(mContext, *inChild.mTrack, scope).Make(ioTrack);
		return;
	}
	AddOnlyItem(mContext, inChild, scope, ItemMaker::LevelsOn::kTrack, ioTrack);
}

bool StackMaker::IsPlain(ItemView const& inChild) const
{
	if (!inChild.mTrack || HasFades(*inChild.mItem) || !GetSpeed(*inChild.mItem).IsPlain())
	{
		return false;
	}
	ExactRange const range = mContext.mRanges.GetRange(inChild);
	return range.mStart == Ratio() && range.mLength >= mContext.mRanges.GetContentLength(inChild);
}

Sequence::Chain StackMaker::MakeChain(ItemView const& inChild, TrackRow const& inRow)
{
	Item const& item = *inChild.mItem;
	MixSettings const& settings = item.GetSettings();
	CurveTiming const curveTiming{mContext.mRanges.GetRange(inChild).mLength, GetStart()};
	Sequence::Chain chain{MakeEffects(mContext, item, inRow.mLayout, curveTiming), {}};
	auto const addSends = [&](bool inIsPreFader)
	{
		for (Send const& send : settings.mSends)
		{
			if (send.mIsPreFader == inIsPreFader)
			{
				chain.mStages.push_back(
					Sequence::Send{FindSubmix(send.mTo), {MakeGain(send.mGain, curveTiming), {}}, {}});
			}
		}
	};
	addSends(true);
	auto faders = MakeFaders(item, curveTiming);
	std::move(faders.begin(), faders.end(), std::back_inserter(chain.mStages));
	addSends(false);
	chain.mPan = MakePanBetween(mContext, inRow.mLayout, mLayout, FindPan(item), curveTiming, item.mPlace);
	return chain;
}

Sequence::Output StackMaker::FindOutput(std::optional<std::string> const& inName) const
{
	return inName ? Sequence::Output{Sequence::Output::Kind::kSubmix, FindSubmix(*inName)}
				  : Sequence::Output{};
}

std::size_t StackMaker::FindSubmix(std::string const& inName) const
{
	auto const& submixes = mStack.GetSettings().mSubmixes;
	auto const found = std::ranges::find(submixes, inName, &Submix::mName);
	return static_cast<std::size_t>(found - submixes.begin());
}

SN::TickTime StackMaker::GetStart() const
{
	return mScope.mGrid.ToTicks(mScope.mGrid.ToFrame(Ratio()));
}

std::vector<std::shared_ptr<Sequence::Description const>> MakeNestedSequences(MakerContext& ioContext,
	ItemView const& inItem, Scope const& inScope, SN::AudioChannelLayout const& inLayout)
{
	if (inItem.mTrack)
	{
		return {MakeTrackSequence(ioContext, *inItem.mTrack, inScope, inLayout)};
	}
	StackMaker maker(ioContext, *inItem.mStack, inScope, inLayout);
	if (inItem.mStack->GetSettings().mMulticam)
	{
		return maker.MakeAngles();
	}
	return {maker.Make()};
}

} // namespace SonaroHost::Otio
