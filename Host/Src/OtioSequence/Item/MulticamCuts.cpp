#include "MulticamCuts.h"

#include <limits>
#include <string>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

class CutMaker
{
public:
	CutMaker(MakerContext& ioContext, MulticamPlace const& inPlace)
		: mContext(ioContext),
		  mPlace(inPlace),
		  mSettings(*inPlace.mStack.GetSettings().mMulticam),
		  mGrid(inPlace.mScope.mGrid)
	{
	}

	Sequence::Multicam Make(std::vector<std::shared_ptr<Sequence::Description const>> inAngles)
	{
		mMade.mAngles = std::move(inAngles);
		mMade.mStart = mGrid.ToTicks(mPlace.mFirstFrame);
		if (mContext.mOptions.mCanSwitchAngles)
		{
			constexpr int kByCuts = -1;
			mMade.mSwitch = std::make_shared<Sequence::AngleSwitch::element_type>(kByCuts);
			mContext.mResult.mAngleSwitches.emplace(mPlace.mStack.mPlace, mMade.mSwitch);
		}
		mMade.mFirstAngle = FindAngle(mPlace.mStack, mSettings.mFirst).value_or(0);
		mAngle = mMade.mFirstAngle;
		for (AngleCut const& cut : mSettings.mCuts)
		{
			TellOutside(cut);
			AddCut(cut);
		}
		return std::move(mMade);
	}

private:
	Ratio GetTime(AngleCut const& inCut) const { return mPlace.mStart + ToSeconds(inCut.mTime); }

	// Nothing for a cut to what is heard already.
	void AddCut(AngleCut const& inCut)
	{
		std::size_t const angle = FindAngle(mPlace.mStack, inCut.mAngle).value_or(0);
		if (angle == mAngle)
		{
			return;
		}
		std::int64_t const frame = mGrid.ToFrame(GetTime(inCut));
		Ratio const length = ToSeconds(inCut.mFade.value_or(mSettings.mFade));
		if (mFadeEnd > frame)
		{
			mContext.TellOnce(Note::Kind::kGuess, GetPlace(inCut),
				"the fade of the cut before lasts beyond this cut; such fades are shortened");
		}
		mFadeEnd = mGrid.ToFrame(GetTime(inCut) + length);
		mMade.mCuts.push_back({mGrid.ToTicks(frame), angle,
			{mGrid.ToTicks(mFadeEnd - frame), mSettings.mShape.value_or(mContext.mOptions.mFadeShape)}});
		mAngle = angle;
	}

	void TellOutside(AngleCut const& inCut)
	{
		if (GetTime(inCut) < mPlace.mUsed.mStart && !std::exchange(mHasToldEarly, true))
		{
			mContext.Tell(Note::Kind::kRemark, GetPlace(inCut),
				"the cut is before the start of the stack; the last of such cuts says which angle is heard "
				"at the start");
		}
		if (GetTime(inCut) >= mPlace.mUsed.mEnd && !std::exchange(mHasToldLate, true))
		{
			mContext.Tell(Note::Kind::kRemark, GetPlace(inCut),
				"the cut is at or after the end of the stack; it is heard only in a transition after the "
				"stack");
		}
	}

	std::string GetPlace(AngleCut const& inCut) const
	{
		return mPlace.mStack.mPlace + "/metadata/sonaro/multicam/cuts/" + std::to_string(inCut.mIndex);
	}

	MakerContext& mContext;
	MulticamPlace const& mPlace;
	MulticamSettings const& mSettings;
	Grid const& mGrid;
	Sequence::Multicam mMade;
	std::size_t mAngle = 0;
	// A note of each kind is enough for a stack.
	bool mHasToldEarly = false;
	bool mHasToldLate = false;
	// Where the last fade ends that was added.
	std::int64_t mFadeEnd = std::numeric_limits<std::int64_t>::min();
};

} // namespace

bool IsMulticam(ItemView const& inItem)
{
	return inItem.mStack && inItem.mStack->GetSettings().mMulticam;
}

Sequence::Multicam MakeMulticam(MakerContext& ioContext, MulticamPlace const& inPlace,
	std::vector<std::shared_ptr<Sequence::Description const>> inAngles)
{
	return CutMaker(ioContext, inPlace).Make(std::move(inAngles));
}

} // namespace SonaroHost::Otio
