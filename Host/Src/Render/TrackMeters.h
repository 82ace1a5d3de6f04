#pragma once

#include "ProgrammeMeter.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost
{

// A track of the programme, for reports.
struct PlannedTrack
{
	// That of the description's track; empty where there is none, so that nothing is measured.
	std::string mOrigin;
	SN::AudioChannelLayout mLayout;
};

// Meters of the tracks of one run, exact over the whole of what they hear, which takes memory as it goes.
class TrackMeters
{
public:
	TrackMeters(std::vector<PlannedTrack> const& inTracks, int inSampleRate);

	// What a graph takes them as.
	std::map<std::string, SN::InterfaceRef<SN::IAudioMeterSetter>> const& GetTaps() const { return mTaps; }
	// A reading for each of the tracks, in their order; nothing for one that has no meter.
	std::vector<std::optional<LoudnessReading>> GetReadings() const;

private:
	std::map<std::string, SN::InterfaceRef<SN::IAudioMeterSetter>> mTaps;
	// A meter for each track, or null.
	std::vector<SN::InterfaceRef<ProgrammeMeter>> mMeters;
};

} // namespace SonaroHost
