#include "AudioRender/Component/AudioFaderRenderer.h"

#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

namespace
{

constexpr unsigned long long kFaderGain = 0;
constexpr unsigned long long kMute = 1;
constexpr float kRampSeconds = 0.005f;

} // namespace

int AudioFaderRenderer::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, Parameters const& inParams, InterfaceRef<IAudioProcessor>* outProcessor)
{
	if (!inContext)
	{
		return eNullPointer;
	}
	auto const renderer = zorvcore::classref::MakeObject<AudioFaderRenderer>();
	int const result = renderer->AudioRenderContextClient::Init(inContext, inFrameRate);
	if (ResultSucceeded(result))
	{
		renderer->ParameterOwnerMixin::Init(inParams,
			{
				.mFrameRate = inFrameRate,
				.mBypassIndex = kMute,
				.mParamInitFlag = renderer->GetFaderParamFlag(),
				.mActionFlag = true,
			},
			inContext);
	}
	renderer->mGainRamp = dsp::GainRamp(inFrameRate, 1.0f, kRampSeconds);
	if (ResultSucceeded(result))
	{
		*outProcessor = renderer;
	}
	return result;
}

InterfaceRef<IAudioProcessor> AudioFaderRenderer::Clone(
	FrameRate const& inFrameRate, unsigned, unsigned inControlInterval)
{
	auto const clone = StartClone(*this);
	clone->CopyFrom(*this, false, inFrameRate, inControlInterval);
	clone->mGainRamp = dsp::GainRamp(inFrameRate, 1.0f, kRampSeconds);
	return clone;
}

void AudioFaderRenderer::ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime)
{
	float const gain = IsBypassed() ? 0.0f : GetValueOrZero(kFaderGain);
	if (IsDelayCompensationDisabled())
	{
		inBuffer *= gain;
		return;
	}
	Prefetcher const* const prefetcher = GetPrefetcher();
	if (inTime == mNextTime || (prefetcher && prefetcher->mReverse != 0))
	{
		mGainRamp.SetTargetGain(gain);
	}
	else
	{
		mGainRamp = dsp::GainRamp(GetFrameRate(), gain, kRampSeconds);
	}
	mGainRamp.Process(inBuffer);
	mNextTime = inTime;
	mNextTime.AddFrames(inBuffer.GetUseSize(), GetFrameRate());
}

} // namespace SN
