#include "LevelShapes.h"

#include <algorithm>
#include <iterator>

namespace SonaroHost::Otio
{

namespace
{

using Form = LevelShape::Form;
using Positions = LevelShape::Positions;
using Unit = LevelUnit;

constexpr std::string_view kKeyframes = "keyframes|keyframe";
constexpr std::string_view kPoints = "controlpoints|pointlist";
constexpr std::string_view kTimes = "time|frame|when";

// The first one that fits counts. Docs/OTIO.md has the same rows.
constexpr LevelShape kShapes[] = {
	{"parameter-id", Form::kNamed, "parameterid", "parametervalue", "defaultparametervalue", "keyframes", "",
		"value", Unit::kDecibels, Unit::kPercent, Unit::kFrames},
	{"display-name", Form::kNamed, "displayname", "startvalue", "", "keyframes", "position", "value",
		Unit::kLinear, Unit::kUnclear, Unit::kUnclear, Positions::kMedia},
	{"name-and-value", Form::kNamed, "name|parameterid|displayname|id", "value", "default|defaultvalue",
		kKeyframes, kTimes, "value"},
	{"control-points", Form::kObject, "", "", "", kPoints, kTimes, "value"},
	{"object", Form::kObject, "", "value", "default|defaultvalue", kKeyframes, kTimes, "value"},
	{"list", Form::kList, "", "", "", "", kTimes, "value"},
	{"value", Form::kValue},
};

struct KnownName
{
	std::string_view mLetters;
	LevelTarget mTarget;
};

constexpr KnownName kNames[] = {
	{"gain", LevelTarget::kGain},
	{"volume", LevelTarget::kGain},
	{"level", LevelTarget::kGain},
	{"pan", LevelTarget::kPan},
	{"mute", LevelTarget::kMute},
	{"muted", LevelTarget::kMute},
	{"ismuted", LevelTarget::kMute},
	{"muteon", LevelTarget::kMute},
	{"faderin", LevelTarget::kFadeIn},
	{"fadein", LevelTarget::kFadeIn},
	{"faderout", LevelTarget::kFadeOut},
	{"fadeout", LevelTarget::kFadeOut},
	{"solo", LevelTarget::kSolo},
	{"soloed", LevelTarget::kSolo},
	{"issolo", LevelTarget::kSolo},
	{"soloon", LevelTarget::kSolo},
	{"channelmap", LevelTarget::kChannels},
	{"channelmapping", LevelTarget::kChannels},
	{"audiochannelmap", LevelTarget::kChannels},
	{"audiochannelmapping", LevelTarget::kChannels},
};

// Words in names of effects that speak of levels.
constexpr std::string_view kLevelWords[] = {"gain", "volume", "level", "levels", "pan", "panner", "panning",
	"balance", "mute", "solo", "fade", "fader"};

bool IsUpper(char inCharacter)
{
	return inCharacter >= 'A' && inCharacter <= 'Z';
}

// 0 for what is neither a letter nor a digit.
char Fold(char inCharacter)
{
	if (IsUpper(inCharacter))
	{
		return static_cast<char>(inCharacter - 'A' + 'a');
	}
	bool const isLower = inCharacter >= 'a' && inCharacter <= 'z';
	bool const isDigit = inCharacter >= '0' && inCharacter <= '9';
	return isLower || isDigit ? inCharacter : '\0';
}

bool IsSame(std::string_view inKey, std::string_view inFolded)
{
	std::size_t matched = 0;
	for (char const character : inKey)
	{
		if (char const folded = Fold(character))
		{
			if (matched == inFolded.size() || inFolded[matched] != folded)
			{
				return false;
			}
			++matched;
		}
	}
	return matched == inFolded.size() && matched > 0;
}

// inFunction(alternative) until it gives true.
template <class Function>
bool AnyAlternative(std::string_view inAlternatives, Function const& inFunction)
{
	while (!inAlternatives.empty())
	{
		std::size_t const end = std::min(inAlternatives.find('|'), inAlternatives.size());
		if (inFunction(inAlternatives.substr(0, end)))
		{
			return true;
		}
		inAlternatives.remove_prefix(std::min(end + 1, inAlternatives.size()));
	}
	return false;
}

bool Has(JsonValue const& inObject, std::string_view inAlternatives)
{
	return FindMember(inObject, inAlternatives) != nullptr;
}

} // namespace

LevelShape const* FindShape(JsonValue const& inLevel)
{
	bool const isObject = inLevel.Is(JsonValue::Type::kObject);
	Form const form =
		isObject ? Form::kObject : (inLevel.Is(JsonValue::Type::kArray) ? Form::kList : Form::kValue);
	auto const* const found = std::ranges::find_if(kShapes,
		[&inLevel, form, isObject](LevelShape const& inShape)
		{
			return inShape.mForm == form &&
				   (!isObject || Has(inLevel, inShape.mValue) || Has(inLevel, inShape.mKeyframes));
		});
	return found == std::end(kShapes) ? nullptr : found;
}

LevelShape const* FindNamedShape(JsonValue const& inParameter)
{
	auto const* const found = std::ranges::find_if(kShapes,
		[&inParameter](LevelShape const& inShape)
		{
			JsonMember const* const name = FindMember(inParameter, inShape.mNamedBy);
			return name != nullptr && name->mValue.Is(JsonValue::Type::kString) &&
				   (Has(inParameter, inShape.mValue) || Has(inParameter, inShape.mKeyframes));
		});
	return found == std::end(kShapes) ? nullptr : found;
}

JsonValue const* FindParameterName(JsonValue const& inParameter)
{
	for (LevelShape const& shape : kShapes)
	{
		JsonMember const* const name = FindMember(inParameter, shape.mNamedBy);
		if (name != nullptr && name->mValue.Is(JsonValue::Type::kString))
		{
			return &name->mValue;
		}
	}
	return nullptr;
}

std::optional<LevelName> ParseLevelName(std::string_view inName)
{
	constexpr std::size_t kLongest = 32;
	std::string letters;
	for (char const character : inName.substr(0, kLongest))
	{
		char const folded = Fold(character);
		if (folded >= 'a')
		{
			letters.push_back(folded);
		}
	}
	std::string_view stem = letters;
	bool const isDecibels = stem.ends_with("db");
	stem.remove_suffix(isDecibels ? 2 : 0);
	auto const* const found = std::ranges::find(kNames, stem, &KnownName::mLetters);
	bool const isKnown = found != std::end(kNames) && (!isDecibels || found->mTarget == LevelTarget::kGain);
	return isKnown ? std::optional(LevelName{found->mTarget, isDecibels}) : std::nullopt;
}

bool NamesLevels(std::string_view inName)
{
	// Goes through each word's letters; a capital after a small letter begins a word.
	std::size_t begin = 0;
	for (std::size_t i = 0; i <= inName.size(); ++i)
	{
		bool const isLetter = i < inName.size() && Fold(inName[i]) != '\0';
		bool const isCapital = isLetter && i > begin && IsUpper(inName[i]) && !IsUpper(inName[i - 1]);
		if (isLetter && !isCapital)
		{
			continue;
		}
		std::string_view const word = inName.substr(begin, i - begin);
		if (std::ranges::any_of(
				kLevelWords, [word](std::string_view inWord) { return IsSame(word, inWord); }))
		{
			return true;
		}
		begin = isCapital ? i : i + 1;
	}
	return false;
}

bool MatchesKey(std::string_view inKey, std::string_view inAlternatives)
{
	return AnyAlternative(
		inAlternatives, [inKey](std::string_view inAlternative) { return IsSame(inKey, inAlternative); });
}

JsonMember const* FindMember(JsonValue const& inObject, std::string_view inAlternatives)
{
	JsonMember const* found = nullptr;
	AnyAlternative(inAlternatives,
		[&inObject, &found](std::string_view inAlternative)
		{
			for (JsonMember const& member : inObject.GetMembers())
			{
				found = IsSame(member.mKey, inAlternative) ? &member : found;
			}
			return found != nullptr;
		});
	return found;
}

JsonValue const& FindInner(JsonValue const& inValue, std::string_view inAlternatives)
{
	JsonMember const* const member = FindMember(inValue, inAlternatives);
	return member != nullptr ? member->mValue : inValue;
}

std::string DescribeUnread(LevelTarget inTarget, std::string_view inWhy)
{
	struct Words
	{
		char const* mName;
		// The key in metadata.sonaro.
		char const* mSetting;
	};
	// In the order of LevelTarget.
	constexpr Words kWords[] = {{"gain", "gain"}, {"pan", "pan"}, {"mute", "mute"}, {"fade-in", "fade_in"},
		{"fade-out", "fade_out"}, {"solo", "solo"}, {"channel selection", "channels"}};
	Words const& words = kWords[static_cast<std::size_t>(inTarget)];
	return std::string("another program's ") + words.mName + " " + std::string(inWhy) +
		   "; to set it, use \"" + words.mSetting + "\" in metadata.sonaro, which takes precedence";
}

} // namespace SonaroHost::Otio
