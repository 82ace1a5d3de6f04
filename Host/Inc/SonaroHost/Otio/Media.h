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
		eExternal,
		eMissing,
		eGenerator,
		// Pictures, which have no sound.
		eImageSequence,
		// A schema of others; it counts as missing.
		eUnknown,
	};

	Kind mKind = Kind::eMissing;
	// The key under which the clip has it; "DEFAULT_MEDIA" for a clip's only reference.
	std::string mKey;
	std::string mName;
	// eExternal: as the file has it, neither decoded nor resolved. Not empty.
	std::string mTargetUrl;
	// eGenerator: what generates.
	std::string mGeneratorKind;
	// What the media file holds, in its own time: its first sample is at the start.
	std::optional<TimeRange> mAvailableRange;
	// eUnknown: "Name.version".
	std::string mSchema;
	// The object as compact JSON; empty for an empty one.
	std::string mMetadata;
	std::string mPlace;
};

} // namespace SonaroHost::Otio
