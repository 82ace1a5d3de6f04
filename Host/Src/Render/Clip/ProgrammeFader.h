#pragma once

#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Automation/AutomationCurve.h"

#include <memory>

namespace SonaroHost
{

// Multiplies what plays forward by a curve, frame by frame: any cut into blocks gives the same samples. The engine's
// own fader follows a curve in ramps that begin with its control blocks.
class ProgrammeFader final : public SN::Implements<ProgrammeFader, SN::IAudioProcessor>
{
public:
	ProgrammeFader(std::shared_ptr<AutomationCurve const> inCurve, SN::FrameRate const& inFrameRate);

	SN::InterfaceRef<SN::IAudioProcessor> Clone(
		SN::FrameRate const& inFrameRate, unsigned, unsigned) override;
	bool HasHistory() override { return false; }
	void ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const& inTime) override;
	void Preroll(SN::TickTime const&, bool) override {}
	void Reset() override {}
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	SN::TickTime GetDelay() override { return SN::kTimeZero; }

private:
	std::shared_ptr<AutomationCurve const> mCurve;
	SN::FrameRate mFrameRate;
};

} // namespace SonaroHost
