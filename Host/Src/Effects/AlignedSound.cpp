#include "AlignedSound.h"

#include "SonaroHost/Automation/AutomationCurve.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost::Effects
{

AlignedSound::AlignedSound(Terms const& inTerms)
	: mTerms(inTerms),
	  mDry(inTerms.mChannels),
	  mWet(inTerms.mChannels),
	  mTime(inTerms.mLatency),
	  mBypass(inTerms.mLatency, inTerms.mMaxFrames),
	  mFadeFrames(
		  static_cast<unsigned>(std::max(1L, std::lround(kCurveRamp.GetSeconds() * inTerms.mSampleRate)))),
	  mFade(mFadeFrames)
{
	std::size_t const frames = std::size_t{inTerms.mLatency} + inTerms.mMaxFrames + 1;
	for (unsigned channel = 0; channel < inTerms.mChannels; ++channel)
	{
		mDry[channel].Init(frames);
		mWet[channel].Init(frames);
	}
}

void AlignedSound::Reset()
{
	std::ranges::for_each(mDry, &Ring::Clear);
	std::ranges::for_each(mWet, &Ring::Clear);
	mMoves = false;
	mHasBegun = false;
	mTime = mTerms.mLatency;
	mBypass.Reset();
}

void AlignedSound::Ring::Write(std::uint64_t inTime, float const* inSamples, std::size_t inCount)
{
	std::size_t const begin = inTime % mSamples.size();
	std::size_t const first = std::min(inCount, mSamples.size() - begin);
	std::copy_n(inSamples, first, mSamples.data() + begin);
	std::copy_n(inSamples + first, inCount - first, mSamples.data());
}

void AlignedSound::TakeInput(dsp::AudioBuffer& inBuffer, unsigned inFirst, unsigned inCount)
{
	for (unsigned channel = 0; channel < mTerms.mChannels; ++channel)
	{
		mDry[channel].Write(mTime, inBuffer.GetChannel(channel) + inFirst, inCount);
	}
	mBypass.Mark(mIsBypassed, inCount);
}

void AlignedSound::TakeOutput(
	dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount, unsigned inLatency)
{
	unsigned const latency = std::min(inLatency, mTerms.mLatency);
	if (latency != mTerms.mLatency && !mMoves)
	{
		BeginToMove();
	}
	for (unsigned channel = 0; channel < mTerms.mChannels && mMoves; ++channel)
	{
		Align(channel, ioBuffer.GetChannel(channel) + inFirst, inCount, latency);
	}
	bool const isBypassed = mBypass.IsOn(0, mTerms.mLatency);
	if (!mHasBegun)
	{
		mFade = isBypassed ? 0 : mFadeFrames;
		mHasBegun = true;
	}
	if (isBypassed || mFade != mFadeFrames || mBypass.CountSame(mTerms.mLatency, inCount) < inCount)
	{
		Fade(ioBuffer, inFirst, inCount);
	}
	mBypass.Advance(inCount);
	mTime += inCount;
}

// What was heard so far stood in its place; until the effect covers it, the sound goes on as it went in.
void AlignedSound::BeginToMove()
{
	mMoves = true;
	for (unsigned channel = 0; channel < mTerms.mChannels; ++channel)
	{
		for (std::uint64_t time = mTime; time < mTime + mTerms.mLatency; ++time)
		{
			mWet[channel].At(time) = mDry[channel].At(time - mTerms.mLatency);
		}
	}
}

void AlignedSound::Align(unsigned inChannel, float* ioSamples, unsigned inCount, unsigned inLatency)
{
	Ring& wet = mWet[inChannel];
	for (unsigned i = 0; i < inCount; ++i)
	{
		std::uint64_t const time = mTime + i;
		wet.At(time + mTerms.mLatency) = mDry[inChannel].At(time);
		wet.At(time + mTerms.mLatency - inLatency) = ioSamples[i];
	}
	for (unsigned i = 0; i < inCount; ++i)
	{
		ioSamples[i] = wet.At(mTime + i);
	}
}

void AlignedSound::Fade(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount)
{
	unsigned const before = mFade;
	for (unsigned channel = 0; channel < mTerms.mChannels; ++channel)
	{
		mFade = before;
		float* const samples = ioBuffer.GetChannel(channel) + inFirst;
		for (unsigned i = 0; i < inCount; ++i)
		{
			mFade =
				mBypass.IsOn(i, mTerms.mLatency) ? std::max(mFade, 1u) - 1 : std::min(mFade + 1, mFadeFrames);
			float const dry = mDry[channel].At(mTime + i - mTerms.mLatency);
			float const part = static_cast<float>(mFade) / static_cast<float>(mFadeFrames);
			samples[i] = mFade == 0             ? dry
						 : mFade == mFadeFrames ? samples[i]
												: dry + (samples[i] - dry) * part;
		}
	}
}

} // namespace SonaroHost::Effects
