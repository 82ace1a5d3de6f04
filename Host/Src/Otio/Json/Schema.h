#pragma once

#include "Cursor.h"

#include <string>

namespace SonaroHost::Otio
{

// What an object of the file is.
enum class SchemaKind
{
	kTimeline,
	kCollection,
	kStack,
	kTrack,
	kClip,
	kGap,
	kTransition,
	kExternalReference,
	kMissingReference,
	kGeneratorReference,
	kImageSequenceReference,
	kLinearTimeWarp,
	kFreezeFrame,
	kEffect,
	kMarker,
	kColor,
	kRationalTime,
	kTimeRange,
	kUnknown,
	// No schema is named.
	kNone,
};

// Goes by the object's "OTIO_SCHEMA", in any version and by old names too. Notes report versions that are newer than
// what is known here, and labels that are no "Name.version".
SchemaKind ReadSchema(Cursor const& inObject);

// The label as it stands, for messages and reports.
std::string GetSchemaLabel(Cursor const& inObject);

} // namespace SonaroHost::Otio
