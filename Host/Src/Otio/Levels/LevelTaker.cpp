#include "LevelTaker.h"

#include "LevelReader.h"
#include "LooseNumber.h"
#include "ParameterState.h"

namespace SonaroHost::Otio
{

namespace
{

// Whether what the value means had to be concluded.
bool IsGuessed(LevelName const& inName, LevelShape const& inShape)
{
	bool const isSwitch = inName.mTarget == LevelTarget::kMute;
	LevelUnit const unit = inName.mTarget == LevelTarget::kPan ? inShape.mPanUnit : inShape.mGainUnit;
	return !isSwitch && !inName.mIsDecibels && unit == LevelUnit::kUnclear;
}

// What cannot be read does no harm where it is 0, off or nothing.
bool IsAtRest(JsonValue const& inValue, LevelShape const* inShape)
{
	JsonValue const& value = inShape != nullptr ? FindInner(inValue, inShape->mValue) : inValue;
	auto const number = ParseLooseNumber(value);
	return IsEmpty(value) || (number && number->GetValue() == 0.0);
}

} // namespace

void LevelTaker::Take(LevelName const& inName, LevelShape const* inShape, Cursor const& inLevel)
{
	bool const isSwitch = inName.mTarget == LevelTarget::kSolo || inName.mTarget == LevelTarget::kChannels;
	if (inShape == nullptr || isSwitch)
	{
		if (!IsAtRest(inLevel.Get(), inShape))
		{
			TellNotRead(inLevel, inName, "is in an unknown form");
		}
		return;
	}
	bool const isDefault = IsGuessed(inName, *inShape) &&
						   FindMember(inLevel.Get(), inShape->mDefault) != nullptr &&
						   FindState(inLevel.Get(), *inShape) == ParameterState::kDefault;
	if (!isDefault)
	{
		Read(inName, *inShape, inLevel);
	}
}

void LevelTaker::Read(LevelName const& inName, LevelShape const& inShape, Cursor const& inLevel)
{
	LevelReader reader(inName, inShape, mRange);
	auto const put = [&](auto& ioLevel, auto inRead)
	{
		if (ioLevel)
		{
			TellNotRead(inLevel, inName, "is a duplicate; only the first is used");
			return;
		}
		ioLevel = (reader.*inRead)(inLevel);
	};
	switch (inName.mTarget)
	{
	case LevelTarget::kPan:
		put(mLevels.mPan, &LevelReader::ReadCurve);
		break;
	case LevelTarget::kMute:
		put(mLevels.mMute, &LevelReader::ReadCurve);
		break;
	case LevelTarget::kFadeIn:
		put(mLevels.mFadeIn, &LevelReader::ReadFade);
		break;
	case LevelTarget::kFadeOut:
		put(mLevels.mFadeOut, &LevelReader::ReadFade);
		break;
	default:
		put(mLevels.mGain, &LevelReader::ReadCurve);
		break;
	}
	mHasUnreadLevel |= reader.HasFailed();
}

void LevelTaker::TellNotRead(Cursor const& inLevel, LevelName const& inName, char const* inWhy)
{
	inLevel.Tell(Note::Kind::kLevelNotRead, DescribeUnread(inName.mTarget, inWhy));
	mHasUnreadLevel = true;
}

} // namespace SonaroHost::Otio
