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

	// Makes the meter of a row; called while the sequence is made.
	SN::InterfaceRef<SN::IAudioMeterSetter> Make(TrackRow const& inRow);
	// From now on they hear what passes.
	void Begin(SN::FrameRate const& inFrameRate);

	// A reading for each row.
	std::vector<std::optional<LoudnessReading>> GetReadings(std::vector<TrackRow> const& inRows) const;

private:
	// The meters by the places of their rows.
	std::map<std::string, SN::InterfaceRef<ProgrammeMeter>> mMeters;
};

} // namespace SonaroHost::Otio
