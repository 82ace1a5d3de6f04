#include "LevelReader.h"

#include "LevelUnits.h"
#include "Otio/Json/Fields.h"
#include "Otio/Mix/CurveReader.h"

#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Otio/Limits.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

bool IsEmptyList(JsonValue const& inValue)
{
	return inValue.GetElements().empty() && inValue.GetMembers().empty();
}

} // namespace

std::optional<Curve> LevelReader::ReadCurve(Cursor const& inLevel)
{
	Outcome const outcome = Read(inLevel);
	if (outcome == Outcome::kNotRead)
	{
		TellNotRead(
			inLevel, mLacksRate ? "has keyframes in frames of an unknown rate" : "is in an unknown form");
	}
	if (outcome != Outcome::kRead)
	{
		return std::nullopt;
	}
	if (!ApplyUnit(inLevel, mName, mShape, mAreFractions, mCurve))
	{
		TellNotRead(inLevel, "has an unclear unit or is out of range");
		return std::nullopt;
	}
	if (!mCurve.IsConstant())
	{
		CountFromItem(inLevel);
		SortKeyframes(mCurve, inLevel);
	}
	return std::move(mCurve);
}

std::optional<Fade> LevelReader::ReadFade(Cursor const& inLevel)
{
	Outcome const outcome = Read(inLevel);
	if (outcome == Outcome::kUnstated ||
		(outcome == Outcome::kRead && mCurve.IsConstant() && mCurve.mConstant == 0.0))
	{
		return std::nullopt;
	}
	std::optional<RationalTime> const duration =
		outcome == Outcome::kRead && mCurve.IsConstant() && mShape.mFadeUnit == LevelUnit::kFrames
			? MakeFrameTime(mCurve.mConstant)
			: std::nullopt;
	if (!duration || duration->mValue < 0.0)
	{
		TellNotRead(inLevel, mLacksRate ? "is in frames of an unknown rate" : "is in an unknown form");
		return std::nullopt;
	}
	return Fade{*duration, {}};
}

LevelReader::Outcome LevelReader::Read(Cursor const& inLevel)
{
	switch (mShape.mForm)
	{
	case LevelShape::Form::kList:
		return ReadKeyframes(inLevel) ? Outcome::kRead : Outcome::kNotRead;
	case LevelShape::Form::kValue:
		return inLevel.IsNothing() ? Outcome::kUnstated
								   : (ReadConstant(inLevel) ? Outcome::kRead : Outcome::kNotRead);
	default:
		return ReadObject(inLevel);
	}
}

LevelReader::Outcome LevelReader::ReadObject(Cursor const& inLevel)
{
	JsonMember const* const unit = FindMember(inLevel.Get(), "unit|units");
	if (unit != nullptr && unit->mValue.Is(JsonValue::Type::kString))
	{
		mName.mIsDecibels |=
			mName.mTarget == LevelTarget::kGain && MatchesKey(unit->mValue.GetString(), "db");
	}
	JsonMember const* const keyframes = FindMember(inLevel.Get(), mShape.mKeyframes);
	if (keyframes != nullptr && !IsEmptyList(keyframes->mValue))
	{
		return ReadKeyframes(Cursor(inLevel, *keyframes)) ? Outcome::kRead : Outcome::kNotRead;
	}
	JsonMember const* const value = FindMember(inLevel.Get(), mShape.mValue);
	if (value == nullptr || value->mValue.Is(JsonValue::Type::kNull))
	{
		bool const isKeyframes = keyframes == nullptr || keyframes->mValue.Is(JsonValue::Type::kNull) ||
								 keyframes->mValue.Is(JsonValue::Type::kArray) ||
								 keyframes->mValue.Is(JsonValue::Type::kObject);
		return isKeyframes ? Outcome::kUnstated : Outcome::kNotRead;
	}
	return ReadConstant(Cursor(inLevel, *value)) ? Outcome::kRead : Outcome::kNotRead;
}

bool LevelReader::ReadConstant(Cursor const& inValue)
{
	auto const number = ParseValue(FindInner(inValue.Get(), mShape.mInnerValue));
	mCurve.mConstant = number ? number->GetValue() : 0.0;
	mAreFractions = number && number->mIsFraction;
	return number.has_value();
}

bool LevelReader::ReadKeyframes(Cursor const& inKeyframes)
{
	bool const areFrames = mShape.mTime.empty();
	if (!inKeyframes.Is(areFrames ? JsonValue::Type::kObject : JsonValue::Type::kArray))
	{
		return false;
	}
	for (JsonMember const& frame : inKeyframes.Get().GetMembers())
	{
		if (!ReadFrame(inKeyframes, frame))
		{
			return false;
		}
	}
	for (std::size_t i = 0; i < inKeyframes.Get().GetElements().size(); ++i)
	{
		if (!ReadKeyframe(Cursor(inKeyframes, i)))
		{
			return false;
		}
	}
	// Which unit the times have must be the same for all.
	std::size_t const count = mCurve.mKeyframes.size();
	bool const areAll = mRelativeTimes == 0 || mRelativeTimes == count;
	mCurve.mTimeUnit = mRelativeTimes == 0 ? Curve::TimeUnit::kTime : Curve::TimeUnit::kFractionOfLength;
	return count > 0 && areAll;
}

bool LevelReader::ReadKeyframe(Cursor const& inKeyframe)
{
	JsonMember const* const time = FindMember(inKeyframe.Get(), mShape.mTime);
	JsonMember const* const value = FindMember(inKeyframe.Get(), mShape.mInnerValue);
	return time != nullptr && value != nullptr &&
		   AddKeyframe(ReadKeyframeTime(Cursor(inKeyframe, *time), MatchesKey(time->mKey, "time")),
			   Cursor(inKeyframe, *value));
}

bool LevelReader::ReadFrame(Cursor const& inKeyframes, JsonMember const& inFrame)
{
	auto const frame = ParseDecimal(inFrame.mKey);
	JsonMember const* const value = FindMember(inFrame.mValue, mShape.mInnerValue);
	if (!frame || value == nullptr)
	{
		return false;
	}
	Cursor const keyframe(inKeyframes, inFrame);
	return AddKeyframe(MakeFrameTime(*frame), Cursor(keyframe, *value));
}

bool LevelReader::AddKeyframe(std::optional<RationalTime> const& inTime, Cursor const& inValue)
{
	auto const value = ParseValue(inValue.Get());
	if (!inTime || !value)
	{
		return false;
	}
	mAreFractions = value->mIsFraction || (mAreFractions && !mCurve.mKeyframes.empty());
	mCurve.mKeyframes.push_back({*inTime, value->GetValue(), Interpolation::kLinear});
	return true;
}

std::optional<RationalTime> LevelReader::ReadKeyframeTime(Cursor const& inTime, bool inIsSeconds)
{
	if (inTime.IsObject())
	{
		++mRationalTimes;
		return ReadIfUsable(inTime, ReadTime);
	}
	auto const number = ParseLooseNumber(inTime.Get());
	if (!number)
	{
		return std::nullopt;
	}
	if (number->mIsFraction)
	{
		++mRelativeTimes;
		bool const isWithin = number->mNumerator >= 0.0 && number->mNumerator <= number->mDenominator;
		return isWithin ? std::optional(RationalTime{number->mNumerator, number->mDenominator})
						: std::nullopt;
	}
	if (inIsSeconds)
	{
		inTime.Tell(
			Note::Kind::kGuess, "the time of a keyframe is taken as seconds from the start of the item");
		return RationalTime{number->GetValue(), 1.0};
	}
	auto const time = MakeFrameTime(number->GetValue());
	if (time)
	{
		inTime.Tell(Note::Kind::kGuess, "the time of a keyframe is taken as frames from the start of the "
										"item, at the rate of its source_range");
	}
	return time;
}

std::optional<RationalTime> LevelReader::MakeFrameTime(double inFrame)
{
	mLacksRate |= !mRange;
	bool const isUsable = mRange && std::abs(inFrame) <= kMaxSeconds * mRange->mDuration.mRate;
	return isUsable ? std::optional(RationalTime{inFrame, mRange->mDuration.mRate}) : std::nullopt;
}

// Positions in the time of the media are the rule; where none of those falls into the range that is shown, and all
// would lie within it when counted from its start, they are so counted.
void LevelReader::CountFromItem(Cursor const& inLevel)
{
	if (mShape.mPositions == LevelShape::Positions::kItem || mRationalTimes == 0 || !mRange)
	{
		return;
	}
	Ratio const start = ToSeconds(mRange->mStartTime);
	Ratio const length = ToSeconds(mRange->mDuration);
	if (start == Ratio())
	{
		return;
	}
	auto const isWithin = [&length](Ratio const& inTime)
	{ return !(inTime < Ratio()) && !(length < inTime); };
	auto const isMediaTime = [&isWithin, &start](Curve::Keyframe const& inKeyframe)
	{ return isWithin(ToSeconds(inKeyframe.mTime) - start); };
	auto const isItemTime = [&isWithin](Curve::Keyframe const& inKeyframe)
	{ return isWithin(ToSeconds(inKeyframe.mTime)); };
	std::vector<Curve::Keyframe>& keyframes = mCurve.mKeyframes;
	if (std::ranges::none_of(keyframes, isMediaTime) && std::ranges::all_of(keyframes, isItemTime))
	{
		inLevel.Tell(
			Note::Kind::kGuess, "keyframe positions are taken as counted from the start of the item");
		return;
	}
	inLevel.Tell(
		Note::Kind::kGuess, "keyframe positions are taken as times of the media, like those of source_range");
	for (Curve::Keyframe& keyframe : keyframes)
	{
		bool const isOfOneRate = keyframe.mTime.mRate == mRange->mStartTime.mRate;
		keyframe.mTime = isOfOneRate ? RationalTime{keyframe.mTime.mValue - mRange->mStartTime.mValue,
										   keyframe.mTime.mRate}
									 : RationalTime{(ToSeconds(keyframe.mTime) - start).ToDouble(), 1.0};
	}
}

// Only switches are true and false.
std::optional<LooseNumber> LevelReader::ParseValue(JsonValue const& inValue) const
{
	bool const isUsable = !inValue.Is(JsonValue::Type::kBool) || mName.mTarget == LevelTarget::kMute;
	return isUsable ? ParseLooseNumber(inValue) : std::nullopt;
}

void LevelReader::TellNotRead(Cursor const& inLevel, char const* inWhy)
{
	mHasFailed = true;
	inLevel.Tell(Note::Kind::kLevelNotRead, DescribeUnread(mName.mTarget, inWhy));
}

} // namespace SonaroHost::Otio
