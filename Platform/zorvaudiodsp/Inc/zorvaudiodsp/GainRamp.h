#pragma once

#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/FrameRate.h"

namespace dsp
{

// A gain that moves in a straight line to its target over a fixed time, and multiplies audio.
//
// Gain     Linear amplitude. Over N = max(1, round(rate * seconds)) samples, sample k of the ramp has
//          start + ((target - start) * k) / N in single precision, and exactly the target from k = N
//          on. It is worked out from k, so that any cut into blocks gives the same bits.
// Silence  A silent channel is skipped, but time passes. At rest at gain 0 channels are flagged and
//          zeroed; at rest at gain 1 they pass bit for bit.
// Time     Each Process advances the ramp once, by the samples of its buffer, whatever the channels.
// Threads  One at a time. Nothing allocates.
class ZORV_API GainRamp
{
public:
	// inSampleRate: samples a second. The ramp begins at rest at inGain.
	GainRamp(float inSampleRate, float inGain, float inRampSeconds);
	GainRamp(zorvmediatypes::FrameRate const& inFrameRate, float inGain, float inRampSeconds);

	// Moves towards the target from now on; nothing for the target that is set already.
	void SetTargetGain(float inGain);

	// Multiplies in place, all channels or one of them.
	void Process(AudioBuffer& ioBuffer);
	void Process(AudioBuffer& ioBuffer, unsigned long long inChannel);
	// One channel into one of another buffer, over the smaller of both UseSizes.
	void Process(AudioBuffer const& inInput, unsigned long long inInputChannel, AudioBuffer& outOutput,
		unsigned long long inOutputChannel);

	// Moves on as if so many samples had passed.
	void AdvanceWithoutProcessing(unsigned long long inSamples);

	float GetTargetGain() const { return mTarget; }
	// The gain of the next sample.
	float GetCurrentGain() const;
	bool IsAtRest() const { return mPosition >= mLength; }
	bool HasConstantGainZero() const { return IsAtRest() && mTarget == 0.0f; }

private:
	void Initialise(double inSampleRate, float inGain, float inRampSeconds);
	void ProcessChannel(AudioBuffer const& inInput, unsigned long long inInputChannel, AudioBuffer& outOutput,
		unsigned long long inOutputChannel, unsigned inCount) const;

	float mStart = 1.0f;
	float mTarget = 1.0f;
	// Samples of a whole ramp, and those that have passed of this one.
	unsigned mLength = 1;
	unsigned mPosition = 1;
};

} // namespace dsp
