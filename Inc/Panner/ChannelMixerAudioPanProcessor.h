#pragma once

#include "Panner/PanProcessorBase.h"
#include "zorvaudiodsp/ChannelMixer.h"

#include <vector>

namespace SN
{

// A fixed gain from each input to each output, for up to eight channels on either side. It needs no
// context and no rate.
class ChannelMixerAudioPanProcessor final : public PanProcessorBase
{
public:
	// inGains: linear, a row for each input channel with one gain for each output channel.
	// eInvalidArgument for more than eight channels and for rows that do not fit the layouts.
	static int Create(AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout,
		std::vector<std::vector<float>> const& inGains, InterfaceRef<IAudioPanProcessor>* outProcessor);

	ChannelMixerAudioPanProcessor(
		AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout);

	int Init(std::vector<std::vector<float>> const& inGains);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;

private:
	dsp::ChannelMixer mMixer;
};

} // namespace SN
