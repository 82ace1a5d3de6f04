#pragma once

#include "zorvaudiodsp/AudioBuffer.h"

namespace dsp
{

// The face of a buffer over channel pointers that someone else owns, with flags of its own.
class ZORV_API AudioBufferShell final : public AudioBuffer
{
public:
	AudioBufferShell() = default;
	AudioBufferShell(AudioBufferShell const&) = delete;

	// The channel count.
	void Init(unsigned long long inChannels);

	// Takes the pointers of as many channels as Init said, of inSamples each; all flags are set.
	void Assign(float** inChannels, unsigned inSamples);

	void Zero() override { SetSilenceFlags(SilenceFlags::All()); }
};

} // namespace dsp
