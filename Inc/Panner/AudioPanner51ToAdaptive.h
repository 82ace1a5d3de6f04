#pragma once

#include "Panner/Algorithm/AudioPannerDirectChannelAssignmentBase.h"
#include "Panner/PanProcessorBase.h"
#include "Panner/PannerClass.h"

namespace SN
{

// The channels of 5.1 on an adaptive track, by a routing, at full level.
class AudioPanner51ToAdaptive final : public PannerClass<AudioPanner51ToAdaptive, PanProcessorBase>,
									  public AudioPannerDirectChannelAssignmentBase
{
public:
	AudioPanner51ToAdaptive();

	int Init(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		int inOutputChannels, AudioChannelMatrix const& inMatrix);
	void CopyFrom(
		AudioPanner51ToAdaptive const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval);

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;
};

} // namespace SN
