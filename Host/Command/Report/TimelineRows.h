#pragma once

#include "Json.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"

#include <vector>

namespace SonaroCommand
{

// The parts of a laid out timeline as JSON. Samples are those of the programme's rate, from its start on.
Json ListClips(std::vector<SonaroHost::Otio::ClipRow> const& inClips);
Json DescribeTrack(SonaroHost::Otio::TrackRow const& inTrack);
Json ListAngles(std::vector<SonaroHost::Otio::AngleRow> const& inAngles);
Json ListMarkers(SonaroHost::Otio::TimelineSequence const& inSequence);
// Rate, length, layout and the label of the first sample.
Json DescribeProgramme(SonaroHost::Otio::TimelineSequence const& inSequence);

// Adds peak, true peak and loudness.
void AddLoudness(Json& ioJson, SonaroHost::LoudnessReading const& inReading);

char const* GetName(SonaroHost::Otio::ClipRow::Status inStatus);

} // namespace SonaroCommand
