#pragma once

#include "Panner/PanProcessorBase.h"
#include "Panner/PannerClass.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/ChannelMixer.h"

#include <algorithm>
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
		std::vector<std::vector<float>> const& inGains)
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

	void CopyFrom(ChannelMixerAudioPanProcessor const& inOther, FrameRate const& inFrameRate,
		unsigned inControlInterval)
	{
		PanProcessorBase::CopyFrom(inOther, inFrameRate, inControlInterval);
		mMixer = inOther.mMixer;
	}

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const&) SONARO_NONBLOCKING override
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

private:
	dsp::ChannelMixer mMixer;
};

} // namespace SN
