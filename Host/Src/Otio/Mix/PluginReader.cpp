#include "PluginReader.h"

#include "CurveReader.h"
#include "Otio/Json/Fields.h"

namespace SonaroHost::Otio
{

namespace
{

std::string ReadTextIfThere(Cursor const& inValue)
{
	return ReadIfThere(inValue, ReadText).value_or(std::string());
}

std::string ReadUri(Cursor const& inValue)
{
	std::string uri = ReadTextIfThere(inValue);
	if (uri.empty())
	{
		inValue.Refuse(std::string(inValue.IsNothing() ? "is missing" : "is empty") +
					   "; use the URI of a plugin, as \"sonaro effects\" lists them");
	}
	return uri;
}

std::vector<PluginEffect::Control> ReadControls(Cursor const& inObject)
{
	std::vector<PluginEffect::Control> controls;
	if (inObject.IsNothing())
	{
		return controls;
	}
	inObject.Require(JsonValue::Type::kObject, "an object of controls by their symbols");
	RepeatedKeys const repeated(inObject.Get());
	for (JsonMember const& member : inObject.Get().GetMembers())
	{
		Cursor const value(inObject, member);
		if (repeated.Has(member))
		{
			value.Tell(Note::Kind::kGuess, "the key appears more than once; the last value is used");
			continue;
		}
		controls.push_back({std::string(member.mKey), ReadControlCurve(value)});
	}
	return controls;
}

} // namespace

PluginEffect ReadPluginEffect(Cursor const& inObject)
{
	inObject.Require(JsonValue::Type::kObject, "an object with \"uri\"");
	TellUnknownKeys(inObject, {"uri", "preset", "state", "controls", "bypass"});
	PluginEffect effect;
	effect.mPlace = inObject.GetPlace();
	effect.mUri = ReadUri(Cursor(inObject, "uri"));
	effect.mPreset = ReadTextIfThere(Cursor(inObject, "preset"));
	effect.mState = ReadTextIfThere(Cursor(inObject, "state"));
	effect.mControls = ReadControls(Cursor(inObject, "controls"));
	effect.mBypass = ReadIfThere(Cursor(inObject, "bypass"), ReadSwitchCurve);
	return effect;
}

} // namespace SonaroHost::Otio
