#pragma once

#include "Panner/PanProcessorBase.h"
#include "Panner/PannerClass.h"
#include "zorvaudiodsp/ChannelMixer.h"

#include <vector>

namespace SN
{

// A fixed gain from each input to each output, for up to eight channels on either side. It needs no
// context and no rate.
class ChannelMixerAudioPanProcessor final
	: public PannerClass<ChannelMixerAudioPanProcessor, PanProcessorBase>
{
public:
	// inGains: linear, a row for each input channel with one gain for each output channel.
	// eInvalidArgument for more than eight channels and for rows that do not fit the layouts.
	int Init(AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout,
		std::vector<std::vector<float>> const& inGains);
	void CopyFrom(ChannelMixerAudioPanProcessor const& inOther, FrameRate const& inFrameRate,
		unsigned inControlInterval);

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;

private:
	dsp::ChannelMixer mMixer;
};

} // namespace SN
