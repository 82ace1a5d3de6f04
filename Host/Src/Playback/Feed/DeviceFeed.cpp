#include "DeviceFeed.h"

#include <algorithm>
#include <cstddef>

namespace SonaroHost::Playback
{

namespace
{

constexpr int kMissFadesPerSecond = 500;

// Multiplies frames by a gain that moves in a straight line, inStart being the first step of inSteps.
void Ramp(float* ioSamples, std::size_t inChannels, unsigned inFrames, unsigned inStart, unsigned inSteps)
{
	for (unsigned i = 0; i < inFrames; ++i)
	{
		float const gain = static_cast<float>(inStart + i) / static_cast<float>(inSteps);
		for (std::size_t channel = 0; channel < inChannels; ++channel)
		{
			ioSamples[i * inChannels + channel] *= gain;
		}
	}
}

} // namespace

DeviceFeed::DeviceFeed(DeviceFormat const& inFormat, std::int64_t inFrames, WakeUp& inWakes)
	: mRing(inFormat.mChannels, inFrames),
	  mWakes(inWakes),
	  mFadeFrames(static_cast<unsigned>(std::max(inFormat.mSampleRate / kMissFadesPerSecond, 1))),
	  mLast(inFormat.mChannels),
	  mFading(inFormat.mChannels),
	  mFadedOut(mFadeFrames),
	  mFadedIn(mFadeFrames)
{
}

void DeviceFeed::Fill(float* outSamples, unsigned inFrames)
{
	Supply const supply = FindSupply();
	bool const isEnough = supply.mIsClosed || supply.mFrames >= inFrames;
	// After a miss it waits for a whole block, so that it does not stutter.
	std::int64_t const heard = mIsMissing && !isEnough ? 0 : std::min<std::int64_t>(supply.mFrames, inFrames);
	bool const isMissBegun = !mIsMissing && !isEnough;
	mFadedIn = mIsMissing && heard > 0 ? 0 : mFadedIn;
	mIsMissing = !isEnough;
	auto const count = static_cast<unsigned>(heard);
	FillHeard(outSamples, count);
	if (isMissBegun)
	{
		mFadedOut = 0;
		std::ranges::copy(mLast, mFading.begin());
	}
	FillMissed(outSamples + static_cast<std::size_t>(count) * mRing.GetChannels(), inFrames - count);
	if (supply.mIsClosed && heard == supply.mFrames)
	{
		// What is heard next begins anew.
		mFadedIn = mFadeFrames;
	}
	if (mIsMissing)
	{
		mMisses.fetch_add(1, std::memory_order_relaxed);
		mMissedFrames.fetch_add(inFrames - count, std::memory_order_relaxed);
	}
	mIdle.store((count > 0 ? 0 : CountIdle()) + inFrames - count, std::memory_order_relaxed);
	if (count > 0)
	{
		mWakes.Wake();
	}
}

DeviceFeed::Supply DeviceFeed::FindSupply() const
{
	// G1 to G3. The gate moves seldom.
	std::int64_t gate = mGate.load(std::memory_order_acquire);
	std::int64_t written = mRing.CountWritten();
	while (gate != mGate.load(std::memory_order_acquire))
	{
		gate = mGate.load(std::memory_order_acquire);
		written = mRing.CountWritten();
	}
	std::int64_t const read = mRing.CountRead();
	return {std::max<std::int64_t>(std::min(written, gate) - read, 0), written >= gate};
}

void DeviceFeed::FillHeard(float* outSamples, unsigned inFrames)
{
	mRing.Read(outSamples, inFrames);
	unsigned const fading = std::min(inFrames, mFadeFrames - mFadedIn);
	Ramp(outSamples, mLast.size(), fading, mFadedIn, mFadeFrames);
	mFadedIn += fading;
	// A short miss may be over before its fade is.
	AddFading(outSamples, std::min(inFrames, mFadeFrames - mFadedOut));
	KeepLast(outSamples, inFrames);
}

void DeviceFeed::FillMissed(float* outSamples, unsigned inFrames)
{
	std::fill_n(outSamples, inFrames * mLast.size(), 0.0f);
	AddFading(outSamples, std::min(inFrames, mFadeFrames - mFadedOut));
}

void DeviceFeed::AddFading(float* ioSamples, unsigned inFrames)
{
	std::size_t const channels = mFading.size();
	for (unsigned i = 0; i < inFrames; ++i)
	{
		++mFadedOut;
		float const gain = 1.0f - static_cast<float>(mFadedOut) / static_cast<float>(mFadeFrames);
		for (std::size_t channel = 0; channel < channels; ++channel)
		{
			ioSamples[i * channels + channel] += mFading[channel] * gain;
		}
	}
}

void DeviceFeed::KeepLast(float const* inSamples, unsigned inFrames)
{
	if (inFrames > 0)
	{
		std::size_t const channels = mLast.size();
		std::copy_n(inSamples + (inFrames - 1) * channels, channels, mLast.begin());
	}
}

void DeviceFeed::TakeBackUnheard()
{
	mRing.TakeBack(std::min(mRing.CountWritten(), mGate.load(std::memory_order_acquire)));
}

std::int64_t DeviceFeed::CountBeyondGate() const
{
	// The gate first: it opens after the frames beyond it are written.
	std::int64_t const gate = mGate.load(std::memory_order_acquire);
	return mRing.CountWritten() - gate;
}

void DeviceFeed::DropUnheard()
{
	mRing.Read(nullptr, FindSupply().mFrames);
	mIsMissing = false;
	mFadedOut = mFadeFrames;
	mFadedIn = mFadeFrames;
}

} // namespace SonaroHost::Playback
