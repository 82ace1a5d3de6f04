#include "DenoiseReader.h"

#include "CurveReader.h"
#include "Otio/Json/Fields.h"

namespace SonaroHost::Otio
{

namespace
{

// Decibels.
constexpr double kMostReduction = 60.0;

DenoiseEffect::Range ReadLearnRange(Cursor const& inObject)
{
	inObject.Require(JsonValue::Type::kObject, "an object with \"start\" and \"end\"");
	CheckKeys(inObject, {"start", "end"}, {});
	Cursor const start(inObject, "start");
	DenoiseEffect::Range range{ReadSecondsOrTime(start), ReadSecondsOrTime(Cursor(inObject, "end"))};
	if (ToSeconds(range.mStart) < Ratio())
	{
		start.Refuse("is negative; times count from the first sample of the media");
	}
	if (ToSeconds(range.mEnd) <= ToSeconds(range.mStart))
	{
		inObject.Refuse("ends before it starts; \"end\" is a time as \"start\" is");
	}
	return range;
}

} // namespace

DenoiseEffect ReadDenoiseEffect(Cursor const& inObject)
{
	inObject.Require(JsonValue::Type::kObject, "an object, which may be empty");
	TellUnknownKeys(inObject, {"reduction", "learn"});
	DenoiseEffect effect;
	effect.mPlace = inObject.GetPlace();
	effect.mReduction = ReadIfThere(Cursor(inObject, "reduction"),
		[](Cursor const& inValue) { return ReadNumber(inValue, 0.0, kMostReduction); });
	effect.mLearn = ReadIfThere(Cursor(inObject, "learn"), ReadLearnRange);
	return effect;
}

} // namespace SonaroHost::Otio
