#pragma once

#include "SonaroHost/Otio/DenoiseEffect.h"
#include "SonaroHost/Otio/Media.h"
#include "SonaroHost/Otio/MixSettings.h"
#include "SonaroHost/Otio/PluginEffect.h"
#include "SonaroHost/Otio/RationalTime.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// What an OpenTimelineIO file says, checked: every number is within its range, every rate above 0, every
// name of a submix leads somewhere. All are plain values; they can be copied, moved and built by hand.
//
// Places    Each object carries its JSON pointer, for messages.
// Metadata  Each carries its metadata of others as compact JSON, empty when there is none, without the
//           object "sonaro"; not-a-number and infinite values in it have become null.
namespace SonaroHost::Otio
{

// An effect of an item.
struct Effect
{
	enum class Kind
	{
		kLinearTimeWarp,
		kFreezeFrame,
		// Everything else. It is rendered by its plugin, and for its levels.
		kOther,
	};

	Kind mKind = Kind::kOther;
	// "Name.version".
	std::string mSchema;
	std::string mName;
	// The file's word for what it is, such as "Volume".
	std::string mEffectName;
	bool mIsEnabled = true;
	// kLinearTimeWarp: media time that passes in a second of the item's; not 0, at most 1000 either way.
	double mTimeScalar = 1.0;
	// kLinearTimeWarp: whether the pitch stays as it is; without it, the render chooses.
	std::optional<bool> mKeepsPitch;
	ForeignLevels mLevels;
	// kOther: the plugin that it is rendered by; null for none.
	std::shared_ptr<PluginEffect const> mPlugin;
	// kOther, of clips: how the noise of the media is reduced; null for not at all.
	std::shared_ptr<DenoiseEffect const> mDenoise;
	std::string mMetadata;
	std::string mPlace;
};

// A marked range or moment of an item.
struct Marker
{
	std::string mName;
	// The range in the time of the item that carries it, before its source_range cuts.
	TimeRange mMarkedRange;
	std::string mColor;
	std::string mComment;
	std::string mMetadata;
	std::string mPlace;
};

// What everything has that takes up time.
struct Item
{
	// Those that are there, or none.
	MixSettings const& GetSettings() const;

	std::string mName;
	// The part that is used, in the item's own time: that of the media or of the children.
	std::optional<TimeRange> mSourceRange;
	bool mIsEnabled = true;
	std::vector<Effect> mEffects;
	std::vector<Marker> mMarkers;
	// Null for none, which is the rule.
	std::shared_ptr<MixSettings const> mSettings;
	std::string mMetadata;
	std::string mPlace;
};

// A piece of a recording.
struct Clip : Item
{
	// The active one, or null for none, which counts as missing.
	MediaReference const* FindActiveMedia() const;

	// The media references, each with a key of its own.
	std::vector<MediaReference> mMediaReferences;
	std::string mActiveMediaKey;
};

// Also what stands for an object of an unknown schema: mSchema then says which.
struct Gap : Item
{
	// Empty for a true gap, otherwise "Name.version".
	std::string mSchema;
};

// Takes up no time itself. On a track at most one stands between two neighbours, or at an end.
struct Transition
{
	MixSettings const& GetSettings() const;

	std::string mName;
	std::string mTransitionType;
	bool mIsEnabled = true;
	// How far it reaches to either side of the cut. Not negative.
	RationalTime mInOffset;
	RationalTime mOutOffset;
	// Null for none.
	std::shared_ptr<MixSettings const> mSettings;
	std::string mMetadata;
	std::string mPlace;
};

struct Composable;

// Children lie one after the other.
struct Track : Item
{
	bool IsAudio() const { return mKind == "Audio"; }

	// "Audio", "Video" or anything else; only the first is heard.
	std::string mKind;
	std::vector<Composable> mChildren;
};

// Children begin together. It has no transitions.
struct Stack : Item
{
	std::vector<Composable> mChildren;
};

// What stands on a track or in a stack.
struct Composable
{
	// Null where it is something else.
	template <class T>
	T const* As() const
	{
		return std::get_if<T>(&mValue);
	}
	// Null for a transition.
	Item const* AsItem() const;

	std::variant<Clip, Gap, Transition, Track, Stack> mValue;
};

// The children of a multicam stack that are its angles: all but tracks of other kinds than Audio.
std::vector<Composable const*> ListAngles(Stack const& inStack);
// The index of an angle among them; of several of one name the first one, and where none has it to the byte, one that has
// it in another form of Unicode. Nothing where there is none.
std::optional<std::size_t> FindAngle(Stack const& inStack, AngleName const& inName);

// The file's outermost object.
struct Timeline
{
	std::string mName;
	// A label of the first frame.
	std::optional<RationalTime> mGlobalStartTime;
	// The timeline's own settings are among the stack's.
	Stack mTracks;
	std::string mMetadata;
	std::string mPlace;
};

} // namespace SonaroHost::Otio
