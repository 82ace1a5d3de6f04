#include "zorvaudiodsp/AudioBufferShell.h"

namespace dsp
{

void AudioBufferShell::Init(unsigned long long inChannels)
{
	SetMemory(nullptr, inChannels, 0, false);
	SetSilenceFlags(SilenceFlags::All());
}

void AudioBufferShell::Assign(float** inChannels, unsigned inSamples)
{
	SetMemory(inChannels, GetNumChannels(), inSamples, false);
	SetSilenceFlags(SilenceFlags::All());
}

} // namespace dsp
