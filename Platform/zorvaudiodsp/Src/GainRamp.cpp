#include "zorvaudiodsp/GainRamp.h"

#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>
#include <cmath>

namespace dsp
{

namespace
{

using namespace zorvaccelerate::utility;

// A ramp's index stays exact in a float: beyond three minutes at 96 kHz the ramp is cut short.
constexpr double kMaxLength = 0x1p24;

} // namespace

GainRamp::GainRamp(float inSampleRate, float inGain, float inRampSeconds)
{
	Initialise(inSampleRate, inGain, inRampSeconds);
}

GainRamp::GainRamp(zorvmediatypes::FrameRate const& inFrameRate, float inGain, float inRampSeconds)
{
	Initialise(inFrameRate.GetSamplesPerSecond(), inGain, inRampSeconds);
}

void GainRamp::Initialise(double inSampleRate, float inGain, float inRampSeconds)
{
	double const samples = std::round(inSampleRate * static_cast<double>(inRampSeconds));
	// Also for what is not a number.
	mLength = samples > 1.0 ? static_cast<unsigned>(std::min(samples, kMaxLength)) : 1;
	mPosition = mLength;
	mStart = inGain;
	mTarget = inGain;
}

void GainRamp::SetTargetGain(float inGain)
{
	if (inGain != mTarget)
	{
		mStart = GetCurrentGain();
		mTarget = inGain;
		mPosition = 0;
	}
}

void GainRamp::Process(AudioBuffer& ioBuffer)
{
	if (IsAtRest() && mTarget == 1.0f)
	{
		return;
	}
	for (unsigned long long channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		ProcessChannel(ioBuffer, channel, ioBuffer, channel, ioBuffer.GetUseSize());
	}
	AdvanceWithoutProcessing(ioBuffer.GetUseSize());
}

void GainRamp::Process(AudioBuffer& ioBuffer, unsigned long long inChannel)
{
	Process(ioBuffer, inChannel, ioBuffer, inChannel);
}

void GainRamp::Process(AudioBuffer const& inInput, unsigned long long inInputChannel, AudioBuffer& outOutput,
	unsigned long long inOutputChannel)
{
	unsigned const count = std::min(inInput.GetUseSize(), outOutput.GetUseSize());
	ProcessChannel(inInput, inInputChannel, outOutput, inOutputChannel, count);
	AdvanceWithoutProcessing(count);
}

void GainRamp::ProcessChannel(AudioBuffer const& inInput, unsigned long long inInputChannel,
	AudioBuffer& outOutput, unsigned long long inOutputChannel, unsigned inCount) const
{
	float* const out = outOutput.GetChannel(inOutputChannel);
	if (!out)
	{
		return;
	}
	float const* const in = inInput.GetChannel(inInputChannel);
	bool const silent = inInput.IsChannelSilent(inInputChannel);
	if (silent || HasConstantGainZero())
	{
		// A flag covers the whole channel, so it is set only where nothing lies beyond the count.
		bool const whole = inCount == outOutput.GetUseSize();
		if (!silent || !whole)
		{
			outOutput.ZeroChannel(inOutputChannel, inCount, false);
		}
		if (whole)
		{
			outOutput.MarkChannelSilent(inOutputChannel);
		}
		return;
	}
	unsigned const ramped = std::min(inCount, mLength - mPosition);
	MulRamp(ramped, in, {mStart, mTarget - mStart, static_cast<float>(mLength)}, mPosition, out);
	unsigned const rest = inCount - ramped;
	if (mTarget != 1.0f)
	{
		MulConstant(rest, in + ramped, mTarget, out + ramped);
	}
	else if (in != out)
	{
		Copy(rest, in + ramped, out + ramped);
	}
	outOutput.NoteChannelWrite(inOutputChannel, inCount);
}

void GainRamp::AdvanceWithoutProcessing(unsigned long long inSamples)
{
	mPosition = static_cast<unsigned>(std::min<unsigned long long>(mLength, mPosition + inSamples));
}

float GainRamp::GetCurrentGain() const
{
	if (IsAtRest())
	{
		return mTarget;
	}
	float const rise = (mTarget - mStart) * static_cast<float>(mPosition);
	return mStart + rise / static_cast<float>(mLength);
}

} // namespace dsp
