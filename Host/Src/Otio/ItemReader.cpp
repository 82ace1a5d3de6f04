#include "ItemReader.h"

#include "EffectReader.h"
#include "MediaReader.h"
#include "Otio/Json/Fields.h"
#include "Otio/Json/Schema.h"
#include "Otio/Levels/ItemLevelsReader.h"

#include <cmath>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

void ReadMediaOfKeys(Cursor const& inReferences, std::string const& inActiveKey, Clip& outClip)
{
	inReferences.Require(JsonValue::Type::kObject, "an object of media references");
	RepeatedKeys const repeated(inReferences.Get());
	for (JsonMember const& member : inReferences.Get().GetMembers())
	{
		Cursor const reference(inReferences, member);
		if (repeated.Has(member))
		{
			reference.Tell(Note::Kind::kGuess, "the key appears more than once; the last value is used");
			continue;
		}
		outClip.mMediaReferences.push_back(
			ReadMedia(reference, std::string(member.mKey), member.mKey == inActiveKey));
	}
}

// A key that leads nowhere: a single reference can only be the one that was meant.
void ResolveActiveKey(Cursor const& inObject, Clip& ioClip)
{
	if (ioClip.FindActiveMedia() != nullptr || ioClip.mMediaReferences.empty())
	{
		return;
	}
	Cursor const key(inObject, "active_media_reference_key");
	if (ioClip.mMediaReferences.size() > 1)
	{
		key.Tell(Note::Kind::kGuess, "the media reference " + Quote(ioClip.mActiveMediaKey) +
										 " does not exist; treating the media as missing");
		return;
	}
	key.Tell(Note::Kind::kGuess, "the media reference " + Quote(ioClip.mActiveMediaKey) +
									 " does not exist; the only one, " +
									 Quote(ioClip.mMediaReferences[0].mKey) + ", is used");
	ioClip.mActiveMediaKey = ioClip.mMediaReferences[0].mKey;
}

void TellMissingLength(Cursor const& inObject, Clip const& inClip)
{
	MediaReference const* const media = inClip.FindActiveMedia();
	if (inClip.mSourceRange || (media != nullptr && media->mAvailableRange))
	{
		return;
	}
	bool const hasFile = media != nullptr && media->mKind == MediaReference::Kind::kExternal;
	inObject.Tell(Note::Kind::kGuess,
		hasFile ? "the clip has neither a source_range nor an available_range; its whole file is used"
				: "the clip has neither a source_range nor an available_range nor a file; assuming a length "
				  "of 0");
}

// The format leaves open which of two lengths a source_range has under a time warp, and programs differ.
void TellOfLength(Cursor const& inObject, Item const& inItem)
{
	constexpr double kSameSpeed = 1.0e-9;
	double speed = 1.0;
	for (Effect const& effect : inItem.mEffects)
	{
		speed *= effect.mIsEnabled && effect.mKind != Effect::Kind::kOther ? effect.mTimeScalar : 1.0;
	}
	// An item at rest is not heard.
	if (speed != 0.0 && std::abs(std::abs(speed) - 1.0) > kSameSpeed)
	{
		inObject.GetFindings().TellOnce(Note::Kind::kGuess,
			"the duration of source_range under a time warp is taken as the length on the track; some "
			"programs write the length of the media instead",
			[&inObject] { return inObject.GetPlace(); });
	}
}

} // namespace

std::shared_ptr<MixSettings const> ShareSettings(MixSettings inSettings)
{
	MixSettings const& settings = inSettings;
	bool const isEmpty = !settings.mGain && !settings.mPan && !settings.mMute && !settings.mSolo &&
						 settings.mChannels.empty() && !settings.mFadeIn && !settings.mFadeOut &&
						 !settings.mShape && !settings.mLayout && settings.mSubmixes.empty() &&
						 !settings.mOutput && settings.mSends.empty() && settings.mStream == 0 &&
						 settings.mSemitones == 0.0 && !settings.mSpeed && !settings.mKeepsPitch &&
						 !settings.mMulticam && settings.mForeign.IsEmpty();
	return isEmpty ? nullptr : std::make_shared<MixSettings const>(std::move(inSettings));
}

void ReadItem(Cursor const& inObject, SettingsOwner inOwner, Item& outItem,
	std::optional<TimeRange> const& inMediaRange)
{
	outItem.mPlace = inObject.GetPlace();
	outItem.mName = ReadLabel(Cursor(inObject, "name"));
	outItem.mSourceRange = ReadIfThere(Cursor(inObject, "source_range"), ReadRange);
	outItem.mIsEnabled = ReadEnabled(Cursor(inObject, "enabled"));
	std::optional<TimeRange> const& range = outItem.mSourceRange ? outItem.mSourceRange : inMediaRange;
	ReadEffects(Cursor(inObject, "effects"), inOwner, range, outItem.mEffects);
	TellOfLength(inObject, outItem);
	ReadMarkers(Cursor(inObject, "markers"), outItem.mMarkers);
	Cursor const metadata(inObject, "metadata");
	MixSettings settings = ReadMixSettings(metadata, inOwner);
	settings.mForeign = ReadItemLevels(metadata, range, settings);
	outItem.mSettings = ShareSettings(std::move(settings));
	outItem.mMetadata = ReadMetadata(inObject);
}

void ReadClip(Cursor const& inObject, Clip& outClip)
{
	constexpr char const* kDefaultKey = "DEFAULT_MEDIA";
	TellUnknownKeys(
		inObject, {"media_reference", "media_references", "active_media_reference_key"}, kItemKeys);
	Cursor const active(inObject, "active_media_reference_key");
	outClip.mActiveMediaKey = active.IsNothing() ? kDefaultKey : ReadText(active);

	Cursor const references(inObject, "media_references");
	Cursor const reference(inObject, "media_reference");
	// What version 1 has and version 2 has; the label of the version is not always right.
	if (!references.IsNothing())
	{
		ReadMediaOfKeys(references, outClip.mActiveMediaKey, outClip);
		if (!reference.IsNothing())
		{
			reference.Tell(Note::Kind::kGuess,
				"the clip has both media_reference and media_references; media_references is used");
		}
	}
	else if (!reference.IsNothing())
	{
		outClip.mActiveMediaKey = kDefaultKey;
		outClip.mMediaReferences.push_back(ReadMedia(reference, kDefaultKey, true));
	}
	ResolveActiveKey(inObject, outClip);
	MediaReference const* const media = outClip.FindActiveMedia();
	ReadItem(
		inObject, SettingsOwner::kClip, outClip, media != nullptr ? media->mAvailableRange : std::nullopt);
	Cursor const chosen(references, std::string_view(outClip.mActiveMediaKey));
	Cursor const metadata(references.IsNothing() ? reference : chosen, "metadata");
	TellOfMediaLevels(metadata, outClip.GetSettings());
	TellMissingLength(inObject, outClip);
}

void ReadTransition(Cursor const& inObject, Transition& outTransition)
{
	TellUnknownKeys(inObject,
		{"name", "metadata", "enabled", "transition_type", "in_offset", "out_offset", "parameters", "color"});
	outTransition.mPlace = inObject.GetPlace();
	outTransition.mName = ReadLabel(Cursor(inObject, "name"));
	outTransition.mTransitionType = ReadLabel(Cursor(inObject, "transition_type"));
	outTransition.mIsEnabled = ReadEnabled(Cursor(inObject, "enabled"));
	auto const readOffset = [&inObject](char const* inKey)
	{
		Cursor const offset(inObject, inKey);
		if (offset.IsNothing())
		{
			offset.Tell(Note::Kind::kGuess, std::string(inKey) + " is missing; assuming 0");
			return RationalTime();
		}
		return ReadDuration(offset);
	};
	outTransition.mInOffset = readOffset("in_offset");
	outTransition.mOutOffset = readOffset("out_offset");
	outTransition.mSettings =
		ShareSettings(ReadMixSettings(Cursor(inObject, "metadata"), SettingsOwner::kTransition));
	outTransition.mMetadata = ReadMetadata(inObject);
}

} // namespace SonaroHost::Otio
