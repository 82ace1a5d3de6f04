#include "Panner/Algorithm/AudioPannerDirectChannelAssignmentBase.h"

#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioBufferChannel.h"

namespace SN
{

void AudioPannerDirectChannelAssignmentBase::Init(
	AudioChannelMatrix const& inMatrix, AudioChannelLayout const& inOutputLayout)
{
	mMatrix = inMatrix;
	mOutputLayout = inOutputLayout;
	mOutputMask = EnumerateOutputChannels(inMatrix);
}

void AudioPannerDirectChannelAssignmentBase::Process(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) const
{
	outOutput.SetSilenceFlags(dsp::SilenceFlags::All());
	dsp::AudioBufferChannel from;
	dsp::AudioBufferChannel to;
	for (auto const& [input, outputs] : mMatrix)
	{
		from.AssignForReading(inInput, input);
		for (unsigned long long const output : outputs)
		{
			if (output < mOutputLayout.size())
			{
				to.Assign(outOutput, output);
				to.Mix(from);
			}
		}
	}
}

} // namespace SN
