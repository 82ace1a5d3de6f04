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
	bool const isSwitch = inName.mTarget == LevelTarget::eMute;
	LevelUnit const unit = inName.mTarget == LevelTarget::ePan ? inShape.mPanUnit : inShape.mGainUnit;
	return !isSwitch && !inName.mIsDecibels && unit == LevelUnit::eUnclear;
}

// What cannot be read does no harm where it is 0, off or nothing.
bool IsAtRest(JsonValue const& inValue, LevelShape const* inShape)
{
	JsonMember const* const member = inShape != nullptr ? FindMember(inValue, inShape->mValue) : nullptr;
	JsonValue const& value = member != nullptr ? member->mValue : inValue;
	auto const number = ParseLooseNumber(value);
	return IsEmpty(value) || (number && number->GetValue() == 0.0);
}

} // namespace

void LevelTaker::Take(LevelName const& inName, LevelShape const* inShape, Cursor const& inLevel)
{
	bool const isSwitch = inName.mTarget == LevelTarget::eSolo || inName.mTarget == LevelTarget::eChannels;
	if (inShape == nullptr || isSwitch)
	{
		if (!IsAtRest(inLevel.Get(), inShape))
		{
			TellNotRead(inLevel, "another program wrote it in a form that is not known");
		}
		return;
	}
	bool const isDefault = IsGuessed(inName, *inShape) &&
						   FindMember(inLevel.Get(), inShape->mDefault) != nullptr &&
						   FindState(inLevel.Get(), *inShape) == ParameterState::eDefault;
	if (isDefault)
	{
		return;
	}
	Read(inName, *inShape, inLevel);
}

template <class Level, class Reader>
void LevelTaker::Put(std::optional<Level>& ioLevel, Cursor const& inLevel, Reader const& inRead)
{
	if (ioLevel)
	{
		TellNotRead(inLevel, "it is one more of the same; the first one counts");
		return;
	}
	ioLevel = inRead();
}

void LevelTaker::Read(LevelName const& inName, LevelShape const& inShape, Cursor const& inLevel)
{
	LevelReader reader(inName, inShape, mRange);
	switch (inName.mTarget)
	{
	case LevelTarget::ePan:
		Put(mLevels.mPan, inLevel, [&] { return reader.ReadCurve(inLevel); });
		break;
	case LevelTarget::eMute:
		Put(mLevels.mMute, inLevel, [&] { return reader.ReadCurve(inLevel); });
		break;
	case LevelTarget::eFadeIn:
		Put(mLevels.mFadeIn, inLevel, [&] { return reader.ReadFade(inLevel); });
		break;
	case LevelTarget::eFadeOut:
		Put(mLevels.mFadeOut, inLevel, [&] { return reader.ReadFade(inLevel); });
		break;
	default:
		Put(mLevels.mGain, inLevel, [&] { return reader.ReadCurve(inLevel); });
		break;
	}
	mHasUnreadLevel |= reader.HasFailed();
}

void LevelTaker::TellNotRead(Cursor const& inLevel, char const* inWhy)
{
	inLevel.Tell(Note::Kind::eLevelNotRead, inWhy);
	mHasUnreadLevel = true;
}

} // namespace SonaroHost::Otio
