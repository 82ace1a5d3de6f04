#include "CurveReader.h"

#include "Otio/Json/Fields.h"

#include "SonaroHost/Otio/Limits.h"

#include <algorithm>
#include <limits>
#include <string>

namespace SonaroHost::Otio
{

namespace
{

constexpr double kSilentDecibels = -std::numeric_limits<double>::infinity();

double ReadDecibels(Cursor const& inValue)
{
	bool const isSilence =
		inValue.Is(JsonValue::Type::kNumber) && inValue.Get().GetNumber() == kSilentDecibels;
	constexpr double kLowest = std::numeric_limits<double>::lowest();
	return isSilence ? kSilentDecibels : ReadNumber(inValue, kLowest, kMaxGainDecibels);
}

double ReadControlValue(Cursor const& inValue)
{
	constexpr double kLargest = std::numeric_limits<float>::max();
	return inValue.Is(JsonValue::Type::kBool) ? (ReadBool(inValue) ? 1.0 : 0.0)
											  : ReadNumber(inValue, -kLargest, kLargest);
}

double ReadSwitch(Cursor const& inValue)
{
	return ReadBool(inValue) ? 1.0 : 0.0;
}

double ReadPanPosition(Cursor const& inValue)
{
	return ReadNumber(inValue, -1.0, 1.0);
}

double ReadSpeedFactor(Cursor const& inValue)
{
	return ReadNumber(inValue, -kMaxTimeScalar, kMaxTimeScalar);
}

Interpolation ReadInterpolation(Cursor const& inValue)
{
	constexpr Choice<Interpolation> kInterpolations[] = {{"hold", Interpolation::kHold},
		{"linear", Interpolation::kLinear}, {"smooth", Interpolation::kSmooth}};
	return inValue.IsNothing() ? Interpolation::kLinear
							   : ReadChoice(inValue, ReadText(inValue), kInterpolations);
}

Curve ReadCurve(Cursor const& inValue, AutomationScale inScale, double (*inReadValue)(Cursor const&))
{
	Curve curve;
	curve.mScale = inScale;
	if (!inValue.IsObject())
	{
		curve.mConstant = inReadValue(inValue);
		return curve;
	}
	CheckKeys(inValue, {"keyframes"}, {});
	Cursor const keyframes(inValue, "keyframes");
	ForEach(keyframes,
		[&curve, inReadValue](Cursor const& inKeyframe)
		{
			CheckKeys(inKeyframe, {"time", "value"}, {"interpolation"});
			curve.mKeyframes.push_back(
				{ReadSecondsOrTime(Cursor(inKeyframe, "time")), inReadValue(Cursor(inKeyframe, "value")),
					ReadInterpolation(Cursor(inKeyframe, "interpolation"))});
		});
	if (curve.mKeyframes.empty())
	{
		keyframes.RefuseType("an array of at least one keyframe");
	}
	SortKeyframes(curve, keyframes);
	return curve;
}

} // namespace

RationalTime ReadSecondsOrTime(Cursor const& inValue)
{
	if (inValue.Is(JsonValue::Type::kNumber))
	{
		return {ReadNumber(inValue, -kMaxSeconds, kMaxSeconds), 1.0};
	}
	inValue.Require(JsonValue::Type::kObject, "seconds or a RationalTime");
	return ReadTime(inValue);
}

Curve ReadControlCurve(Cursor const& inValue)
{
	return ReadCurve(inValue, AutomationScale::kLinear, ReadControlValue);
}

Curve ReadSwitchCurve(Cursor const& inValue)
{
	return ReadCurve(inValue, AutomationScale::kLinear, ReadSwitch);
}

Curve ReadGain(Cursor const& inValue)
{
	return ReadCurve(inValue, AutomationScale::kDecibels, ReadDecibels);
}

Curve ReadPan(Cursor const& inValue)
{
	return ReadCurve(inValue, AutomationScale::kLinear, ReadPanPosition);
}

Curve ReadSpeed(Cursor const& inValue)
{
	Curve curve = ReadCurve(inValue, AutomationScale::kLinear, ReadSpeedFactor);
	if (curve.mKeyframes.size() > kMaxSpeedKeyframes)
	{
		Cursor(inValue, "keyframes")
			.Refuse("a speed has " + std::to_string(curve.mKeyframes.size()) + " keyframes; use at most " +
					std::to_string(kMaxSpeedKeyframes));
	}
	return curve;
}

FadeShape ReadShape(Cursor const& inValue)
{
	constexpr Choice<FadeShape> kFadeShapes[] = {{"linear", FadeShape::kLinear},
		{"equal-power", FadeShape::kEqualPower}, {"s-curve", FadeShape::kSCurve}};
	return ReadChoice(inValue, ReadText(inValue), kFadeShapes);
}

Fade ReadFade(Cursor const& inValue)
{
	inValue.Require(JsonValue::Type::kObject, "an object with \"duration\"");
	CheckKeys(inValue, {"duration"}, {"curve"});
	Cursor const duration(inValue, "duration");
	Fade fade;
	fade.mDuration = ReadSecondsOrTime(duration);
	if (fade.mDuration.mValue < 0.0)
	{
		duration.Refuse("the duration is negative; use 0 or more");
	}
	fade.mShape = ReadIfThere(Cursor(inValue, "curve"), ReadShape);
	return fade;
}

void SortKeyframes(Curve& ioCurve, Cursor const& inPlace)
{
	struct Entry
	{
		Ratio mSeconds;
		Curve::Keyframe mKeyframe;
	};
	std::vector<Entry> entries;
	entries.reserve(ioCurve.mKeyframes.size());
	for (Curve::Keyframe const& keyframe : ioCurve.mKeyframes)
	{
		entries.push_back({ToSeconds(keyframe.mTime), keyframe});
	}
	std::ranges::stable_sort(entries, {}, &Entry::mSeconds);
	ioCurve.mKeyframes.clear();
	for (std::size_t i = 0; i < entries.size(); ++i)
	{
		if (i + 1 < entries.size() && entries[i].mSeconds == entries[i + 1].mSeconds)
		{
			inPlace.Tell(Note::Kind::kGuess, kSameTimeNote);
			continue;
		}
		ioCurve.mKeyframes.push_back(entries[i].mKeyframe);
	}
}

} // namespace SonaroHost::Otio
