#include "Panner/ChannelMixerAudioPanProcessor.h"

#include "Panner/CreatePanner.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SN
{

int ChannelMixerAudioPanProcessor::Create(AudioChannelLayout const& inInputLayout,
	AudioChannelLayout const& inOutputLayout, std::vector<std::vector<float>> const& inGains,
	InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner(
		zorvcore::classref::MakeObject<ChannelMixerAudioPanProcessor>(inInputLayout, inOutputLayout),
		outProcessor, inGains);
}

ChannelMixerAudioPanProcessor::ChannelMixerAudioPanProcessor(
	AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout)
	: PanProcessorBase(u"ChannelMixerAudioPanProcessor", inInputLayout, inOutputLayout)
{
}

int ChannelMixerAudioPanProcessor::Init(std::vector<std::vector<float>> const& inGains)
{
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

InterfaceRef<IAudioPanProcessor> ChannelMixerAudioPanProcessor::Clone(FrameRate const&, unsigned)
{
	auto const clone = zorvcore::classref::MakeObject<ChannelMixerAudioPanProcessor>(
		GetInputAudioChannelLayout(), GetOutputAudioChannelLayout());
	clone->mMixer = mMixer;
	return clone;
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
