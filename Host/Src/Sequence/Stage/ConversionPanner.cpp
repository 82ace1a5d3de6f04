#include "ConversionPanner.h"

#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost::Sequence
{

ConversionPanner::ConversionPanner(
	SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput)
	: mInput(inInput),
	  mOutput(inOutput),
	  mMix(SN::AudioChannelMix::GetMixFunction(inInput, inOutput))
{
}

void ConversionPanner::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, SN::TickTime const&)
{
	mMix(inInput, outOutput);
}

} // namespace SonaroHost::Sequence
