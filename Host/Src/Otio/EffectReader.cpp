#include "EffectReader.h"

#include "Otio/Json/Fields.h"
#include "Otio/Json/Schema.h"
#include "Otio/Levels/ForeignLevelsReader.h"
#include "Otio/Levels/LevelShapes.h"
#include "Otio/Mix/DenoiseReader.h"
#include "Otio/Mix/PluginReader.h"

#include "SonaroHost/Otio/Limits.h"

#include <cmath>
#include <memory>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

void ReadTimeScalar(Cursor const& inObject, Effect& outEffect)
{
	Cursor const scalar(inObject, "time_scalar");
	outEffect.mKind = Effect::Kind::kLinearTimeWarp;
	if (scalar.IsNothing())
	{
		scalar.Tell(Note::Kind::kGuess, "time_scalar is missing; assuming 1 (normal speed)");
		return;
	}
	outEffect.mTimeScalar = ReadNumber(scalar, -kMaxTimeScalar, kMaxTimeScalar);
	if (outEffect.mTimeScalar == 0.0)
	{
		scalar.Tell(Note::Kind::kRemark, "time_scalar is 0; the item is a freeze frame and is silent");
		outEffect.mKind = Effect::Kind::kFreezeFrame;
	}
}

// Reports what of an effect is not heard. One at its defaults leaves nothing out.
void TellOfRest(Cursor const& inObject, Effect const& inEffect, EffectLevels const& inLevels)
{
	bool const hasLevels = !inLevels.mLevels.IsEmpty() || inLevels.mHasUnreadLevel;
	bool const isComplete =
		hasLevels ? inLevels.mRest != ParameterState::kChanged : inLevels.mRest == ParameterState::kDefault;
	if (isComplete)
	{
		return;
	}
	std::string const& label = inEffect.mEffectName.empty() ? inEffect.mName : inEffect.mEffectName;
	std::string const& name = inLevels.mName.empty() ? label : inLevels.mName;
	if (hasLevels)
	{
		inObject.Tell(
			Note::Kind::kIgnored, "not all parameters of the effect " + Quote(name) + " are rendered");
		return;
	}
	bool const isLevel = NamesLevels(name) || NamesLevels(label);
	inObject.Tell(isLevel ? Note::Kind::kLevelNotRead : Note::Kind::kIgnored,
		"the effect " + Quote(name) + " (schema " + Quote(inEffect.mSchema) + ") is not rendered");
}

// What the effect is rendered by: a plugin, or the reduction of noise. Others have neither.
void ReadRenderer(Cursor const& inSonaro, SettingsOwner inOwner, Effect& outEffect)
{
	if (!inSonaro.IsObject())
	{
		return;
	}
	TellUnknownKeys(inSonaro, {"lv2", "denoise"});
	Cursor const plugin(inSonaro, "lv2");
	Cursor const denoise(inSonaro, "denoise");
	if (!plugin.IsNothing())
	{
		outEffect.mPlugin = std::make_shared<PluginEffect const>(ReadPluginEffect(plugin));
	}
	if (denoise.IsNothing())
	{
		return;
	}
	if (outEffect.mPlugin)
	{
		denoise.Refuse("stands beside \"lv2\"; use an effect for each");
	}
	if (inOwner != SettingsOwner::kClip)
	{
		denoise.Refuse("is for clips only, as it needs their media; move the effect to the clips");
	}
	outEffect.mDenoise = std::make_shared<DenoiseEffect const>(ReadDenoiseEffect(denoise));
}

Effect ReadEffect(Cursor const& inObject, SettingsOwner inOwner, std::optional<TimeRange> const& inRange)
{
	inObject.Require(JsonValue::Type::kObject, "an effect");
	SchemaKind const kind = ReadSchema(inObject);
	Effect effect;
	effect.mSchema = GetSchemaLabel(inObject);
	effect.mPlace = inObject.GetPlace();
	effect.mName = ReadLabel(Cursor(inObject, "name"));
	effect.mEffectName = ReadLabel(Cursor(inObject, "effect_name"));
	effect.mIsEnabled = ReadEnabled(Cursor(inObject, "enabled"));
	effect.mMetadata = ReadMetadata(inObject);
	if (kind == SchemaKind::kLinearTimeWarp)
	{
		ReadTimeScalar(inObject, effect);
		effect.mKeepsPitch =
			ReadMixSettings(Cursor(inObject, "metadata"), SettingsOwner::kTimeWarp).mKeepsPitch;
		return effect;
	}
	if (kind == SchemaKind::kFreezeFrame)
	{
		effect.mKind = Effect::Kind::kFreezeFrame;
		effect.mTimeScalar = 0.0;
		return effect;
	}
	Cursor const metadata(inObject, "metadata");
	ReadRenderer(Cursor(metadata, "sonaro"), inOwner, effect);
	if (effect.mIsEnabled && !effect.mPlugin && !effect.mDenoise)
	{
		EffectLevels levels = ReadEffectLevels(metadata, inRange);
		TellOfRest(inObject, effect, levels);
		effect.mLevels = std::move(levels.mLevels);
	}
	return effect;
}

// Markers have a text or a Color, which has a name or is written as "#ff8000".
std::string ReadColor(Cursor const& inValue)
{
	if (!inValue.IsObject() || ReadSchema(inValue) != SchemaKind::kColor)
	{
		return ReadLabel(inValue);
	}
	TellUnknownKeys(inValue, {"name", "r", "g", "b", "a"});
	std::string name = ReadLabel(Cursor(inValue, "name"));
	if (!name.empty())
	{
		return name;
	}
	constexpr double kLargest = 255.0;
	constexpr char kHexDigits[] = "0123456789abcdef";
	std::string code(1, '#');
	for (char const* const part : {"r", "g", "b"})
	{
		auto const share = ReadIfUsable(
			Cursor(inValue, part), [](Cursor const& inPart) { return ReadNumber(inPart, 0.0, 1.0); });
		auto const byte = static_cast<unsigned>(std::lround(share.value_or(0.0) * kLargest));
		code += kHexDigits[byte / 16];
		code += kHexDigits[byte % 16];
	}
	return code;
}

Marker ReadMarker(Cursor const& inObject)
{
	if (!inObject.IsObject() || ReadSchema(inObject) != SchemaKind::kMarker)
	{
		inObject.Refuse("is not a marker");
	}
	TellUnknownKeys(inObject, {"name", "color", "comment", "marked_range", "range", "metadata"});
	Marker marker;
	marker.mPlace = inObject.GetPlace();
	marker.mName = ReadLabel(Cursor(inObject, "name"));
	marker.mColor = ReadColor(Cursor(inObject, "color"));
	marker.mComment = ReadLabel(Cursor(inObject, "comment"));
	// Version 1 called it "range".
	bool const isOld = Cursor(inObject, "marked_range").IsNothing() && !Cursor(inObject, "range").IsNothing();
	marker.mMarkedRange = ReadRange(Cursor(inObject, isOld ? "range" : "marked_range"));
	marker.mMetadata = ReadMetadata(inObject);
	return marker;
}

} // namespace

void ReadEffects(Cursor const& inList, SettingsOwner inOwner, std::optional<TimeRange> const& inRange,
	std::vector<Effect>& outEffects)
{
	ForEach(inList,
		[&](Cursor const& inObject) { outEffects.push_back(ReadEffect(inObject, inOwner, inRange)); });
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
