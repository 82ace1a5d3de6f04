#include "Otio/Json/Cursor.h"
#include "Otio/Json/Fields.h"
#include "Otio/Json/JsonFile.h"
#include "Otio/Mix/CurveReader.h"
#include "Otio/Mix/PluginReader.h"
#include "SonaroHost/Otio/PluginEffect.h"

#include "SonaroHost/Base/HostError.h"

namespace SonaroHost::Otio
{

namespace
{

// The effect in which a note stands learns of it.
void Remark(Note const& inNote, std::vector<PluginEffect>& ioEffects)
{
	for (PluginEffect& effect : ioEffects)
	{
		if (inNote.mPlace.starts_with(effect.mPlace + "/"))
		{
			effect.mRemarks.push_back(inNote.mPlace.substr(effect.mPlace.size() + 1) + ": " + inNote.mText);
		}
	}
}

void CheckTimes(Curve const& inCurve, std::string const& inPlace, std::filesystem::path const& inPath)
{
	// They are in the order of time.
	if (!inCurve.mKeyframes.empty() && inCurve.mKeyframes.front().mTime.mValue < 0.0)
	{
		throw HostError(
			HostError::Kind::kInput, {inPath, inPlace + "/keyframes", "a keyframe has a negative time",
										 "use times from 0 on, the start of the sound"});
	}
}

void CheckTimes(std::vector<PluginEffect> const& inEffects, std::filesystem::path const& inPath)
{
	for (PluginEffect const& effect : inEffects)
	{
		CheckTimes(effect.mBypass.value_or(Curve()), effect.mPlace + "/bypass", inPath);
		for (PluginEffect::Control const& control : effect.mControls)
		{
			CheckTimes(control.mValue, effect.mPlace + "/controls/" + control.mSymbol, inPath);
		}
	}
}

} // namespace

std::vector<PluginEffect> ReadEffectFile(std::filesystem::path const& inPath)
{
	std::vector<PluginEffect> effects;
	auto const read = [&effects](Cursor const& inEffect) { effects.push_back(ReadPluginEffect(inEffect)); };
	std::vector<Note> const notes = ReadJson(ReadBytes(inPath), inPath, "a file of effects",
		[&read](Cursor const& inRoot)
		{
			if (inRoot.IsObject())
			{
				read(inRoot);
				return;
			}
			if (!inRoot.Is(JsonValue::Type::kArray) || inRoot.Get().GetElements().empty())
			{
				inRoot.RefuseType("an array of at least one effect, or one effect");
			}
			ForEach(inRoot, read);
		});
	for (Note const& note : notes)
	{
		if (note.mText == kSameTimeNote)
		{
			Remark(note, effects);
			continue;
		}
		// Nothing else in a file that is for effects alone is left to guess, so what a note says of doing so is cut off.
		throw HostError(HostError::Kind::kInput,
			{inPath, note.mPlace, note.mText.substr(0, note.mText.find(';')), "correct it or remove it"});
	}
	CheckTimes(effects, inPath);
	return effects;
}

} // namespace SonaroHost::Otio
