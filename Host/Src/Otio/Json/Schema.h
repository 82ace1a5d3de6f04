#pragma once

#include "Cursor.h"

#include <string>

namespace SonaroHost::Otio
{

// What an object of the file is.
enum class SchemaKind
{
	eTimeline,
	eCollection,
	eStack,
	eTrack,
	eClip,
	eGap,
	eTransition,
	eExternalReference,
	eMissingReference,
	eGeneratorReference,
	eImageSequenceReference,
	eLinearTimeWarp,
	eFreezeFrame,
	eEffect,
	eMarker,
	eColor,
	eRationalTime,
	eTimeRange,
	eUnknown,
	// No schema is named.
	eNone,
};

// Goes by the object's "OTIO_SCHEMA", in any version and by old names too. Notes report versions that are newer than
// what is known here, and labels that are no "Name.version".
SchemaKind ReadSchema(Cursor const& inObject);

// The label as it stands, for messages and reports.
std::string GetSchemaLabel(Cursor const& inObject);

} // namespace SonaroHost::Otio
