#include "Ranges.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace SonaroHost::Otio
{

namespace
{

ExactRange ToExactRange(TimeRange const& inRange)
{
	return {ToSeconds(inRange.mStartTime), ToSeconds(inRange.mDuration)};
}

// The item's own, which without keyframes stays the same; nothing without one.
std::optional<SpeedCurve> MakeCurve(Item const& inItem)
{
	auto const& speed = inItem.GetSettings().mSpeed;
	if (!speed)
	{
		return std::nullopt;
	}
	std::vector<SpeedCurve::Key> keys;
	for (Curve::Keyframe const& keyframe : speed->mKeyframes)
	{
		keys.push_back(
			{ToSeconds(keyframe.mTime), Ratio::FromDouble(keyframe.mValue), keyframe.mInterpolation});
	}
	if (keys.empty())
	{
		keys.push_back({Ratio(), Ratio::FromDouble(speed->mConstant), Interpolation::kHold});
	}
	return SpeedCurve(std::move(keys));
}

} // namespace

Speed GetSpeed(Item const& inItem)
{
	Speed speed;
	for (Effect const& effect : inItem.mEffects)
	{
		if (effect.mIsEnabled && effect.mKind == Effect::Kind::kLinearTimeWarp)
		{
			speed.mFactor = speed.mFactor * Ratio::FromDouble(effect.mTimeScalar);
		}
		speed.mIsFrozen =
			speed.mIsFrozen || (effect.mIsEnabled && effect.mKind == Effect::Kind::kFreezeFrame);
	}
	if (auto const curve = MakeCurve(inItem))
	{
		auto const constant = curve->FindConstant();
		speed.mCurve =
			constant ? nullptr : std::make_shared<SpeedCurve const>(curve->MultiplyBy(speed.mFactor));
		speed.mFactor = speed.mFactor * constant.value_or(Ratio(1));
	}
	// The product of several can be too small for a fraction to hold.
	speed.mIsFrozen = speed.mIsFrozen || speed.mFactor == Ratio();
	return speed;
}

Ratio GetKeptSpeed(Item const& inItem, bool inKeepsPitch)
{
	Ratio speed(1);
	for (Effect const& effect : inItem.mEffects)
	{
		if (effect.mIsEnabled && effect.mKind == Effect::Kind::kLinearTimeWarp &&
			effect.mKeepsPitch.value_or(inKeepsPitch))
		{
			speed = speed * Ratio::FromDouble(std::abs(effect.mTimeScalar));
		}
	}
	auto const curve = KeepsPitch(inItem, inKeepsPitch) ? MakeCurve(inItem) : std::nullopt;
	if (auto const constant = curve ? curve->FindConstant() : std::nullopt)
	{
		speed = speed * std::max(*constant, -*constant);
	}
	return speed == Ratio() ? Ratio(1) : speed;
}

bool KeepsPitch(Item const& inItem, bool inKeepsPitch)
{
	return inItem.GetSettings().mKeepsPitch.value_or(inKeepsPitch);
}

ItemView::ItemView(Composable const& inChild)
	: mItem(inChild.AsItem()),
	  mClip(inChild.As<Clip>()),
	  mTrack(inChild.As<Track>()),
	  mStack(inChild.As<Stack>())
{
}

ItemView::ItemView(Stack const& inStack)
	: mItem(&inStack),
	  mStack(&inStack)
{
}

ItemView::ItemView(Clip const& inClip)
	: mItem(&inClip),
	  mClip(&inClip)
{
}

ItemView::ItemView(Track const& inTrack)
	: mItem(&inTrack),
	  mTrack(&inTrack)
{
}

ExactRange Ranges::GetRange(ItemView const& inItem)
{
	if (!inItem.mItem)
	{
		return {};
	}
	if (inItem.mItem->mSourceRange)
	{
		return ToExactRange(*inItem.mItem->mSourceRange);
	}
	if (inItem.mClip)
	{
		return MeasureMedia(*inItem.mClip);
	}
	return {Ratio(), GetContentLength(inItem)};
}

ExactRange Ranges::MeasureMedia(Clip const& inClip)
{
	MediaReference const* const reference = inClip.FindActiveMedia();
	if (reference && reference->mAvailableRange)
	{
		return ToExactRange(*reference->mAvailableRange);
	}
	if (!mIsHeard)
	{
		return {};
	}
	auto const [place, isNew] = mLengths.try_emplace(&inClip);
	if (isNew)
	{
		if (auto const& media = mMedia.Get(inClip).mMedia)
		{
			place->second = Ratio(media->mFrames) / Ratio::FromDouble(media->mSampleRate);
		}
		else
		{
			mNotes.push_back({Note::Kind::kGuess, inClip.mPlace,
				"the clip has no source_range, and the length of its media is unknown; assuming a length of "
				"0"});
		}
	}
	return {Ratio(), place->second};
}

Ratio Ranges::GetContentLength(ItemView const& inComposition)
{
	if (!inComposition.mTrack && !inComposition.mStack)
	{
		return {};
	}
	auto const found = mLengths.find(inComposition.mItem);
	if (found != mLengths.end())
	{
		return found->second;
	}
	bool const wasHeard = mIsHeard;
	mIsHeard = mIsHeard && (!inComposition.mTrack || inComposition.mTrack->IsAudio());
	Ratio const length = AddUp(inComposition);
	mIsHeard = wasHeard;
	mLengths.emplace(inComposition.mItem, length);
	return length;
}

Ratio Ranges::AddUp(ItemView const& inComposition)
{
	Ratio length;
	for (Composable const& child :
		inComposition.mTrack ? inComposition.mTrack->mChildren : inComposition.mStack->mChildren)
	{
		Ratio const part = GetRange(child).mLength;
		length = inComposition.mTrack ? length + part : std::max(length, part);
	}
	return length;
}

} // namespace SonaroHost::Otio
