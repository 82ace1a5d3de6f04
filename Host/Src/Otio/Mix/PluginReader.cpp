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

// A key that is there and says nothing may have been meant to say something.
std::string ReadTextOfUse(Cursor const& inObject, char const* inKey, std::string const& inRemedy)
{
	Cursor const value(inObject, inKey);
	std::string text = ReadTextIfThere(value);
	if (text.empty() && inObject.Get().Find(inKey) != nullptr)
	{
		value.Refuse(std::string(value.IsNothing() ? "is null" : "is empty") + "; " + inRemedy);
	}
	return text;
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
		PluginEffect::Control& control = controls.emplace_back();
		control.mSymbol = member.mKey;
		if (value.Is(JsonValue::Type::kString))
		{
			control.mText = ReadText(value);
		}
		else
		{
			control.mValue = ReadControlCurve(value);
		}
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
	effect.mPreset =
		ReadTextOfUse(inObject, "preset", "use the name or the URI of a preset, or leave it out");
	effect.mState = ReadTextOfUse(inObject, "state", "use a state in Turtle, or leave it out");
	effect.mControls = ReadControls(Cursor(inObject, "controls"));
	Cursor const bypass(inObject, "bypass");
	if (inObject.Get().Find("bypass") != nullptr)
	{
		effect.mBypass = ReadSwitchCurve(bypass);
	}
	return effect;
}

} // namespace SonaroHost::Otio
