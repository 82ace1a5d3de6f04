#pragma once

#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Metering/LoudnessBank.h"
#include "SonaroHost/Metering/LoudnessMeter.h"

#include <memory>
#include <optional>

namespace SonaroHost::Otio
{

// A meter within a graph that is rendered once: what it hears after Init counts, whatever runs it comes in.
// Threads: that of the render.
class ProgrammeMeter final : public SN::Implements<ProgrammeMeter, SN::IAudioMeterSetter>
{
public:
	static constexpr SN::Identifier<ProgrammeMeter> kIdentifier{0x5d1c0a94be72f638ull, 0x83e7f2096ab4d15cull};

	explicit ProgrammeMeter(SN::AudioChannelLayout inLayout);

	// From the next Init on it is measured beside others in inBank.
	void Share(std::shared_ptr<LoudnessBank> inBank);

	void Init(SN::FrameRate const& inFrameRate, unsigned inChannels) override;
	void SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const& inTime) override;
	void Shutdown() override;
	// Nested sequences begin a run at each of their items.
	void Reset() override;

	// Nothing before Init, and for what cannot be measured.
	std::optional<LoudnessReading> GetReading() const;

private:
	SN::AudioChannelLayout mLayout;
	std::shared_ptr<LoudnessBank> mBank;
	std::optional<LoudnessMeter> mMeter;
};

} // namespace SonaroHost::Otio
