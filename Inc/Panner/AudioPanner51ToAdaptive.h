#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "Panner/Algorithm/AudioPannerDirectChannelAssignmentBase.h"
#include "Panner/PanProcessorBase.h"

namespace SN
{

// The channels of 5.1 on an adaptive track, by a routing, at full level.
class AudioPanner51ToAdaptive final : public PanProcessorBase,
									  public AudioRenderContextClient,
									  public AudioPannerDirectChannelAssignmentBase
{
public:
	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		int inOutputChannels, AudioChannelMatrix const& inMatrix,
		InterfaceRef<IAudioPanProcessor>* outProcessor);

	explicit AudioPanner51ToAdaptive(AudioChannelLayout const& inOutputLayout);

	int Init(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		AudioChannelMatrix const& inMatrix);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;
};

} // namespace SN
