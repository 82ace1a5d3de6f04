#pragma once

#include "Otio/Json/JsonValue.h"

#include <optional>
#include <string>
#include <string_view>

namespace SonaroHost::Otio
{

// What a parameter of another program sets.
enum class LevelTarget
{
	kGain,
	kPan,
	kMute,
	kFadeIn,
	kFadeOut,
	kSolo,
	kChannels,
};

struct LevelName
{
	LevelTarget mTarget = LevelTarget::kGain;
	// The name says that the value is in decibels.
	bool mIsDecibels = false;
};

enum class LevelUnit
{
	// The values have to show it.
	kUnclear,
	// A factor.
	kLinear,
	// -100 to 30, the lowest being silence.
	kDecibels,
	// -100 (left) to 100 (right).
	kPercent,
	kFrames,
};

// One way in which other programs write a level. Keys are compared by their letters and digits without regard to case;
// alternatives are separated by '|'.
struct LevelShape
{
	enum class Form
	{
		// An object in a list of parameters, which names itself.
		kNamed,
		// The level stands under its name: as an object, a list of keyframes, or the value itself.
		kObject,
		kList,
		kValue,
	};
	enum class Positions
	{
		// Keyframes count from the start of the item.
		kItem,
		// They count as the item's source_range does.
		kMedia,
	};

	// The conformance case is "level-" and this.
	std::string_view mName;
	Form mForm;
	std::string_view mNamedBy = {};
	std::string_view mValue = {};
	std::string_view mDefault = {};
	std::string_view mKeyframes = {};
	// Empty where keyframes are an object whose keys are frames.
	std::string_view mTime = {};
	// The key of the value within a keyframe, and within a value that is an object.
	std::string_view mInnerValue = {};
	LevelUnit mGainUnit = LevelUnit::kUnclear;
	LevelUnit mPanUnit = LevelUnit::kUnclear;
	LevelUnit mFadeUnit = LevelUnit::kUnclear;
	Positions mPositions = Positions::kItem;
};

// The shape of a level that stands under its name; null for a value of no use.
LevelShape const* FindShape(JsonValue const& inLevel);
// The same of an object that names itself.
LevelShape const* FindNamedShape(JsonValue const& inParameter);
// How an object names itself; null where it does not.
JsonValue const* FindParameterName(JsonValue const& inParameter);

// "gain", "Volume_dB", "Pan", "faderIn": by the letters alone, without regard to case.
std::optional<LevelName> ParseLevelName(std::string_view inName);
// Whether one of the words of the name of an effect is about levels: "Clip Volume", "AudioGain".
bool NamesLevels(std::string_view inName);

// Describes a level that is not read: what it is, why, and what to write in its place.
std::string DescribeUnread(LevelTarget inTarget, std::string_view inWhy);

// Whether the key is one of the alternatives.
bool MatchesKey(std::string_view inKey, std::string_view inAlternatives);
// The member of the first alternative that is there, the last one where it is given more than once; null for none.
JsonMember const* FindMember(JsonValue const& inObject, std::string_view inAlternatives);
// Its value; inValue itself for none.
JsonValue const& FindInner(JsonValue const& inValue, std::string_view inAlternatives);

} // namespace SonaroHost::Otio
