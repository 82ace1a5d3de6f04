#pragma once

#include "SonaroHost/Metering/LoudnessMeter.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

class ProgrammeMeter;

// Meters of the tracks of one sequence, exact over the whole of what they hear, which takes memory as it goes.
class TrackMeters
{
public:
	TrackMeters();
	~TrackMeters();
	TrackMeters(TrackMeters const&) = delete;
	TrackMeters& operator=(TrackMeters const&) = delete;

	// To be asked for them by the making of the sequence.
	SN::InterfaceRef<SN::IAudioMeterSetter> Make(TrackRow const& inRow);
	// From now on they hear what passes.
	void Begin(SN::FrameRate const& inFrameRate);

	// For each row.
	std::vector<std::optional<LoudnessReading>> GetReadings(std::vector<TrackRow> const& inRows) const;

private:
	// By the place of the row.
	std::map<std::string, SN::InterfaceRef<ProgrammeMeter>> mMeters;
};

} // namespace SonaroHost::Otio
