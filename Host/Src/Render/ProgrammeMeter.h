#pragma once

#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Metering/LoudnessBank.h"
#include "SonaroHost/Metering/LoudnessMeter.h"

#include <memory>
#include <optional>

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
	ProgrammeMeter(SN::AudioChannelLayout const& inLayout, int inSampleRate,
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

} // namespace SonaroHost
