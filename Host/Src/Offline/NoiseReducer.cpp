#include "NoiseReducer.h"

#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace SonaroHost
{

namespace
{

// A frame that is finished lies one hop before the newest one.
constexpr unsigned kHeldHops = SpectralGrid::kHopsInFrame + 1;
constexpr std::int64_t kHopsRead = 8;

std::int64_t DivideDown(std::int64_t inDividend, std::int64_t inDivisor)
{
	return inDividend / inDivisor - (inDividend % inDivisor < 0 ? 1 : 0);
}

} // namespace

NoiseReducer::NoiseReducer(std::shared_ptr<NoiseProfile const> inProfile, double inReduction,
	Recording const& inRecording, std::int64_t inFirst, FrameReader inRead)
	: mGrid(inRecording.mSampleRate),
	  mRecording(inRecording),
	  mRead(std::move(inRead)),
	  mTransform(mGrid),
	  mDecision(std::move(inProfile), inRecording.mChannels,
		  static_cast<float>(zorvcore::math::Exp10(-inReduction / 20.0))),
	  mLanes(inRecording.mChannels),
	  mPower(std::size_t{inRecording.mChannels} * mGrid.GetBins()),
	  mGains(3, std::vector<float>(mGrid.GetBins())),
	  mShares(mGrid.GetBins()),
	  mRemoved(mGrid.mSize)
{
	for (Lane& lane : mLanes)
	{
		lane.mSamples.resize(std::size_t{kHeldHops} * mGrid.mHop);
		lane.mLastSpectrum.resize(mGrid.mSize);
		lane.mSpectrum.resize(mGrid.mSize);
		lane.mNoise.resize(mGrid.mSize);
	}
	// A hop needs the gains of the frame before the first one that touches it.
	std::int64_t const hop = DivideDown(inFirst, mGrid.mHop);
	std::int64_t const frame = NoiseGains::FindFirstFrame(hop - 1);
	mDecision.Start(frame);
	mNextHop = frame - SpectralGrid::kHopsInFrame + 1;
	while (mNextHop < frame)
	{
		ReadHop();
	}
	while (mNextHop < hop + kHeldHops)
	{
		Advance();
	}
	mReady = static_cast<unsigned>((hop + 1) * mGrid.mHop - inFirst);
}

void NoiseReducer::Read(dsp::AudioBuffer& outBuffer)
{
	for (unsigned done = 0; done < outBuffer.GetUseSize();)
	{
		if (mReady == 0)
		{
			Advance();
			mReady = mGrid.mHop;
		}
		unsigned const count = std::min(mReady, outBuffer.GetUseSize() - done);
		for (std::size_t channel = 0; channel < mLanes.size(); ++channel)
		{
			Lane const& lane = mLanes[channel];
			float const* const samples = lane.mSamples.data() + mGrid.mHop - mReady;
			std::copy_n(samples, count, outBuffer.GetChannel(channel) + done);
		}
		mReady -= count;
		done += count;
	}
	outBuffer.NoteBufferWrite(0, outBuffer.GetUseSize());
}

void NoiseReducer::Advance()
{
	ReadHop();
	Analyse();
	SmoothGains();
	for (Lane& lane : mLanes)
	{
		Subtract(lane);
	}
}

void NoiseReducer::ReadHop()
{
	std::int64_t const start = mNextHop++ * mGrid.mHop;
	std::int64_t const end = std::min<std::int64_t>(start + mGrid.mHop, mRecording.mFrames);
	std::size_t const channels = mLanes.size();
	if (end > std::max<std::int64_t>(start, 0) && end > mInterleavedStart + mInterleavedFrames)
	{
		mInterleavedStart = start;
		mInterleavedFrames = std::min<std::int64_t>(kHopsRead * mGrid.mHop, mRecording.mFrames - start);
		mInterleaved.resize(static_cast<std::size_t>(mInterleavedFrames) * channels);
		mRead(mInterleaved.data(), start, static_cast<unsigned>(mInterleavedFrames));
	}
	std::size_t const count =
		start < 0 ? 0 : static_cast<std::size_t>(std::max<std::int64_t>(end - start, 0));
	float const* const samples =
		mInterleaved.data() +
		(count > 0 ? static_cast<std::size_t>(start - mInterleavedStart) * channels : 0);
	for (std::size_t channel = 0; channel < channels; ++channel)
	{
		std::vector<float>& held = mLanes[channel].mSamples;
		std::copy(held.begin() + mGrid.mHop, held.end(), held.begin());
		float* const hop = held.data() + held.size() - mGrid.mHop;
		std::fill(hop, hop + mGrid.mHop, 0.0f);
		for (std::size_t i = 0; i < count; ++i)
		{
			hop[i] = samples[i * channels + channel];
		}
	}
}

void NoiseReducer::Analyse()
{
	std::size_t bin = 0;
	for (Lane& lane : mLanes)
	{
		std::swap(lane.mSpectrum, lane.mLastSpectrum);
		mTransform.Analyse(std::span<float const>(lane.mSamples).last(mGrid.mSize), lane.mSpectrum);
		ComputePower(lane.mSpectrum, std::span(mPower).subspan(bin, mGrid.GetBins()));
		bin += mGrid.GetBins();
	}
	std::rotate(mGains.begin(), mGains.end() - 1, mGains.end());
	mDecision.Decide(mPower, mGains.front());
}

void NoiseReducer::SmoothGains()
{
	std::size_t const last = mShares.size() - 1;
	std::vector<float>& sums = mGains.back();
	for (std::size_t bin = 0; bin <= last; ++bin)
	{
		sums[bin] = 0.25f * (mGains[0][bin] + sums[bin]) + 0.5f * mGains[1][bin];
	}
	for (std::size_t bin = 0; bin <= last; ++bin)
	{
		float const below = sums[bin == 0 ? 1 : bin - 1];
		float const above = sums[bin == last ? last - 1 : bin + 1];
		mShares[bin] = 1.0f - (0.25f * (below + above) + 0.5f * sums[bin]);
	}
}

void NoiseReducer::Subtract(Lane& ioLane)
{
	std::size_t const size = mGrid.mSize;
	std::vector<float> const& spectrum = ioLane.mLastSpectrum;
	mRemoved[0] = spectrum[0] * mShares[0];
	mRemoved[size / 2] = spectrum[size / 2] * mShares[size / 2];
	for (std::size_t bin = 1; bin < size / 2; ++bin)
	{
		mRemoved[bin] = spectrum[bin] * mShares[bin];
		mRemoved[size - bin] = spectrum[size - bin] * mShares[bin];
	}
	mTransform.Synthesize(mRemoved);
	std::copy(ioLane.mNoise.begin() + mGrid.mHop, ioLane.mNoise.end(), ioLane.mNoise.begin());
	std::fill(ioLane.mNoise.end() - mGrid.mHop, ioLane.mNoise.end(), 0.0f);
	for (std::size_t i = 0; i < size; ++i)
	{
		ioLane.mNoise[i] += mRemoved[i];
	}
	for (std::size_t i = 0; i < mGrid.mHop; ++i)
	{
		float const sample = ioLane.mSamples[i];
		ioLane.mSamples[i] = std::isfinite(sample) ? sample - ioLane.mNoise[i] : 0.0f;
	}
}

} // namespace SonaroHost
