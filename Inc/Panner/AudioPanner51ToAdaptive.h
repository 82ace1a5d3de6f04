#pragma once

#include "Panner/Algorithm/AudioPannerDirectChannelAssignmentBase.h"
#include "Panner/PanProcessorBase.h"
#include "Panner/PannerClass.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace SN
{

// The channels of 5.1 on an adaptive track, by a routing, at full level.
class AudioPanner51ToAdaptive final : public PannerClass<AudioPanner51ToAdaptive, PanProcessorBase>,
									  public AudioPannerDirectChannelAssignmentBase
{
public:
	AudioPanner51ToAdaptive()
		: PannerClass(u"AudioPanner51ToAdaptive", VX::kAudioChannelType51, VX::kAudioChannelTypeAdaptive)
	{
	}

	// eInvalidArgument also for more channels than a buffer has.
	int Init(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		int inOutputChannels, AudioChannelMatrix const& inMatrix)
	{
		SetOutputLayout(zorvmediatypes::CreateMultichannelLayout(inOutputChannels));
		AudioPannerDirectChannelAssignmentBase::Init(inMatrix, GetOutputAudioChannelLayout());
		int const result = AudioRenderContextClient::Init(inContext, inFrameRate);
		bool const isTooWide = GetNumOutputChannels() > dsp::AudioBuffer::kMaxChannels;
		return ResultSucceeded(result) && isTooWide ? eInvalidArgument : result;
	}
	void CopyFrom(
		AudioPanner51ToAdaptive const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
	{
		PanProcessorBase::CopyFrom(inOther, inFrameRate, inControlInterval);
		AudioPannerDirectChannelAssignmentBase::Init(inOther.GetMatrix(), inOther.GetOutputLayout());
	}

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const&) SONARO_NONBLOCKING override
	{
		Process(inInput, outOutput);
	}
};

} // namespace SN
