#include "EffectReader.h"

#include "Fields.h"
#include "ForeignLevelsReader.h"
#include "ItemReader.h"
#include "Schema.h"

#include "SonaroHost/Otio/Reader.h"

#include <utility>

namespace SonaroHost::Otio
{

namespace
{

void ReadTimeScalar(Cursor const& inObject, Effect& outEffect)
{
	Cursor const scalar(inObject, "time_scalar");
	outEffect.mKind = Effect::Kind::eLinearTimeWarp;
	if (scalar.IsNothing())
	{
		scalar.Tell(Note::Kind::eGuess, "is missing; it counts as 1");
		return;
	}
	outEffect.mTimeScalar = ReadNumber(scalar, -kMaxTimeScalar, kMaxTimeScalar);
	if (outEffect.mTimeScalar == 0.0)
	{
		scalar.Tell(Note::Kind::eRemark, "is 0, which is a freeze frame");
		outEffect.mKind = Effect::Kind::eFreezeFrame;
	}
}

Effect ReadEffect(Cursor const& inObject, std::optional<double> inRate)
{
	if (!inObject.IsObject())
	{
		inObject.RefuseType("an effect");
	}
	SchemaKind const kind = ReadSchema(inObject);
	Effect effect;
	effect.mSchema = GetSchemaLabel(inObject);
	effect.mPlace = inObject.GetPlace();
	effect.mName = ReadLabel(Cursor(inObject, "name"));
	effect.mEffectName = ReadLabel(Cursor(inObject, "effect_name"));
	effect.mIsEnabled = ReadEnabled(Cursor(inObject, "enabled"));
	effect.mMetadata = ReadMetadata(inObject);
	if (kind == SchemaKind::eLinearTimeWarp)
	{
		ReadTimeScalar(inObject, effect);
		return effect;
	}
	if (kind == SchemaKind::eFreezeFrame)
	{
		effect.mKind = Effect::Kind::eFreezeFrame;
		effect.mTimeScalar = 0.0;
		return effect;
	}
	effect.mLevels = ReadEffectLevels(Cursor(inObject, "metadata"), inRate);
	if (effect.mLevels.IsEmpty() && effect.mIsEnabled)
	{
		std::string const& name = effect.mEffectName.empty() ? effect.mName : effect.mEffectName;
		inObject.Tell(Note::Kind::eIgnored,
			"the effect " + Quote(name) + " of the schema " + Quote(effect.mSchema) + " is not rendered");
	}
	return effect;
}

Marker ReadMarker(Cursor const& inObject)
{
	if (!inObject.IsObject() || ReadSchema(inObject) != SchemaKind::eMarker)
	{
		inObject.Refuse("is no marker");
	}
	TellUnknownKeys(inObject, {"name", "color", "comment", "marked_range", "range", "metadata"});
	Marker marker;
	marker.mPlace = inObject.GetPlace();
	marker.mName = ReadLabel(Cursor(inObject, "name"));
	marker.mColor = ReadLabel(Cursor(inObject, "color"));
	marker.mComment = ReadLabel(Cursor(inObject, "comment"));
	// Version 1 called it "range".
	bool const isOld = Cursor(inObject, "marked_range").IsNothing() && !Cursor(inObject, "range").IsNothing();
	marker.mMarkedRange = ReadRange(Cursor(inObject, isOld ? "range" : "marked_range"));
	marker.mMetadata = ReadMetadata(inObject);
	return marker;
}

} // namespace

void ReadEffects(Cursor const& inList, std::optional<double> inRate, std::vector<Effect>& outEffects)
{
	ForEach(inList, [inRate, &outEffects](Cursor const& inObject)
		{ outEffects.push_back(ReadEffect(inObject, inRate)); });
}

void ReadMarkers(Cursor const& inList, std::vector<Marker>& outMarkers)
{
	ForEach(inList,
		[&outMarkers](Cursor const& inObject)
		{
			if (auto marker = ReadIfUsable(inObject, ReadMarker))
			{
				outMarkers.push_back(std::move(*marker));
			}
		});
}

} // namespace SonaroHost::Otio
