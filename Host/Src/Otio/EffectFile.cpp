#include "Otio/Json/Cursor.h"
#include "Otio/Json/Fields.h"
#include "Otio/Json/JsonFile.h"
#include "Otio/Mix/PluginReader.h"
#include "SonaroHost/Otio/PluginEffect.h"

#include "SonaroHost/Base/HostError.h"

namespace SonaroHost::Otio
{

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
			inRoot.Require(JsonValue::Type::kArray, "an array of effects, or one effect");
			ForEach(inRoot, read);
		});
	// Nothing in a file that is for effects alone is left to guess.
	if (!notes.empty())
	{
		throw HostError(HostError::Kind::kInput, {inPath, notes.front().mPlace, notes.front().mText, {}});
	}
	return effects;
}

} // namespace SonaroHost::Otio
