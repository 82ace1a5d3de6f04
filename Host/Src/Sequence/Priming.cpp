#include "Priming.h"

#include "Sonaro/IParameterOwnerMixin.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cmath>

namespace SonaroHost::Sequence
{

namespace
{

unsigned GetSilentFrames(SN::FrameRate const& inFrameRate)
{
	constexpr double kSeconds = 0.02;
	return static_cast<unsigned>(std::ceil(inFrameRate.GetSamplesPerSecond() * kSeconds));
}

template <class Node>
void Sample(Node& ioNode)
{
	if (auto const parameters = SN::InterfaceRef<SN::IParameterOwnerMixin>::FromThis(&ioNode))
	{
		parameters->UpdateControls(SN::kTimeZero);
	}
}

} // namespace

void PrimeFader(SN::IAudioProcessor& ioFader, unsigned inChannels, SN::FrameRate const& inFrameRate)
{
	Sample(ioFader);
	dsp::AudioBuffer silence(inChannels, GetSilentFrames(inFrameRate));
	silence.Zero();
	ioFader.ProcessAudioData(silence, SN::kTimeZero);
}

void PrimePanner(SN::IAudioPanProcessor& ioPanner, SN::FrameRate const& inFrameRate)
{
	Sample(ioPanner);
	dsp::AudioBuffer silence(ioPanner.GetNumInputChannels(), GetSilentFrames(inFrameRate));
	dsp::AudioBuffer output(ioPanner.GetNumOutputChannels(), silence.GetCapacity());
	silence.Zero();
	ioPanner.ProcessAudioData(silence, output, SN::kTimeZero);
}

} // namespace SonaroHost::Sequence
