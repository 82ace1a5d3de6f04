#include "Panner/ChannelMixerAudioPanProcessor.h"

#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SN
{

int ChannelMixerAudioPanProcessor::Init(AudioChannelLayout const& inInputLayout,
	AudioChannelLayout const& inOutputLayout, std::vector<std::vector<float>> const& inGains)
{
	SetShape(u"ChannelMixerAudioPanProcessor", inInputLayout, inOutputLayout);
	unsigned const inputs = GetNumInputChannels();
	unsigned const outputs = GetNumOutputChannels();
	bool const fits = inputs <= dsp::ChannelMixer::kMaxChannels &&
					  outputs <= dsp::ChannelMixer::kMaxChannels && inGains.size() == inputs &&
					  std::all_of(inGains.begin(), inGains.end(),
						  [outputs](std::vector<float> const& inRow) { return inRow.size() == outputs; });
	if (!fits)
	{
		return eInvalidArgument;
	}
	constexpr auto kStride = static_cast<unsigned>(dsp::ChannelMixer::kMaxChannels);
	mMixer.ResetParameter(false);
	mMixer.SetChannelCount(inputs, outputs);
	for (unsigned input = 0; input < inputs; ++input)
	{
		for (unsigned output = 0; output < outputs; ++output)
		{
			mMixer.SetParameter(static_cast<int>(input + kStride * output), inGains[input][output]);
		}
	}
	return kSuccess;
}

void ChannelMixerAudioPanProcessor::CopyFrom(
	ChannelMixerAudioPanProcessor const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
{
	PanProcessorBase::CopyFrom(inOther, inFrameRate, inControlInterval);
	mMixer = inOther.mMixer;
}

void ChannelMixerAudioPanProcessor::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const&)
{
	if (inInput.GetNumChannels() < GetNumInputChannels() ||
		outOutput.GetNumChannels() < GetNumOutputChannels())
	{
		outOutput.Zero();
		return;
	}
	unsigned const frames = std::min(inInput.GetUseSize(), outOutput.GetUseSize());
	dsp::SilenceFlags silence;
	mMixer.Process(inInput.GetChannels(), outOutput.GetChannels(), static_cast<int>(frames),
		inInput.GetSilenceFlags(), silence);
	for (unsigned channel = 0; channel < GetNumOutputChannels(); ++channel)
	{
		if (silence.Test(channel))
		{
			outOutput.MarkChannelSilent(channel);
		}
		else
		{
			outOutput.NoteChannelWrite(channel, frames);
		}
	}
}

} // namespace SN
