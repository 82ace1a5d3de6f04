#pragma once

#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Metering/LoudnessBank.h"
#include "SonaroHost/Metering/LoudnessMeter.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost
{

// A meter within a graph that is rendered once: all that it hears counts, whatever runs it comes in. Nested sequences
// begin a run at each of their items.
// Threads: that of the render.
class ProgrammeMeter final : public SN::Implements<ProgrammeMeter, SN::IAudioMeterSetter>
{
public:
	static constexpr SN::Identifier<ProgrammeMeter> kIdentifier{0x5d1c0a94be72f638ull, 0x83e7f2096ab4d15cull};

	// inBank: in which it is measured beside others.
	ProgrammeMeter(SN::AudioChannelLayout const& inLayout, int inSampleRate, LoudnessMeter::Windows inWindows,
		std::shared_ptr<LoudnessBank> const& inBank);

	void Init(SN::FrameRate const&, unsigned) override {}
	void SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const& inTime) override;
	void Shutdown() override {}
	void Reset() override {}

	// Nothing for what cannot be measured.
	std::optional<LoudnessReading> GetReading() const;

private:
	std::optional<LoudnessMeter> mMeter;
};

// A track of the programme, for reports.
struct PlannedTrack
{
	// That of the description's track; empty where there is none, so that nothing is measured.
	std::string mOrigin;
	SN::AudioChannelLayout mLayout;
};

// Meters of the tracks of one run, exact over the whole of what they hear, which takes memory as it goes. Each belongs to a
// group, whose meters are heard by one thread at a time.
class TrackMeters
{
public:
	// inGroups: how many groups there are at most, at least 1.
	TrackMeters(std::vector<PlannedTrack> const& inTracks, int inSampleRate, LoudnessMeter::Windows inWindows,
		std::size_t inGroups);

	// What a graph takes them as.
	std::map<std::string, SN::InterfaceRef<SN::IAudioMeterSetter>> const& GetTaps() const { return mTaps; }
	// The origins of the taps in each group.
	std::vector<std::vector<std::string>> const& GetGroups() const { return mGroups; }
	// A reading for each of the tracks, in their order; nothing for one that has no meter.
	std::vector<std::optional<LoudnessReading>> GetReadings() const;

private:
	std::map<std::string, SN::InterfaceRef<SN::IAudioMeterSetter>> mTaps;
	std::vector<std::vector<std::string>> mGroups;
	// A meter for each track, or null.
	std::vector<SN::InterfaceRef<ProgrammeMeter>> mMeters;
};

} // namespace SonaroHost
