#pragma once

#include "SonaroHost/Otio/RationalTime.h"

#include <optional>
#include <string>

namespace SonaroHost::Otio
{

// Where a clip's sound comes from, if from anywhere.
struct MediaReference
{
	enum class Kind
	{
		kExternal,
		kMissing,
		kGenerator,
		// Pictures, which have no sound.
		kImageSequence,
		// A schema of others; it counts as missing.
		kUnknown,
	};

	Kind mKind = Kind::kMissing;
	// The key under which the clip has it; "DEFAULT_MEDIA" for a clip's only reference.
	std::string mKey;
	std::string mName;
	// kExternal: as the file has it, neither decoded nor resolved. Not empty.
	std::string mTargetUrl;
	// kGenerator: what generates.
	std::string mGeneratorKind;
	// What the media file holds, in its own time: its first sample is at the start.
	std::optional<TimeRange> mAvailableRange;
	// kUnknown: "Name.version".
	std::string mSchema;
	// The object as compact JSON; empty for an empty one.
	std::string mMetadata;
	std::string mPlace;
};

} // namespace SonaroHost::Otio
