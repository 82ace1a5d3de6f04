#include "stretch/omega/PhaseVocoder.h"

#include "stretch/omega/SampleHistory.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <numeric>

namespace dsp::stretch::omega
{

namespace
{

constexpr double kLongestFrameSeconds = 0.2;
// Of what is compared, so much may change: a chord that fades by 30 dB a second has 0.01, noise about 0.2.
constexpr double kLargestChange = 0.03;
// Below -100 dB there is nothing to continue.
constexpr double kLeastPower = 1e-10;
// By the power of the largest peak.
constexpr float kLeastPeak = 1e-9f;

std::vector<float> MakeBlackmanWindow(unsigned inSize)
{
	std::vector<float> window(inSize);
	for (unsigned i = 0; i < inSize; ++i)
	{
		double const phase = 2.0 * std::numbers::pi * i / inSize;
		window[i] = static_cast<float>(
			0.42 - 0.5 * zorvcore::math::Cos(phase) + 0.08 * zorvcore::math::Cos(2.0 * phase));
	}
	return window;
}

std::vector<float> MakeHannWindow(unsigned inSize, double inScale)
{
	std::vector<float> window(inSize);
	for (unsigned i = 0; i < inSize; ++i)
	{
		window[i] = static_cast<float>(
			inScale * (0.5 - 0.5 * zorvcore::math::Cos(2.0 * std::numbers::pi * i / inSize)));
	}
	return window;
}

} // namespace

void PhaseVocoder::Init(double inSampleRate, std::vector<float> const& inWeights)
{
	mFrameSize = std::max(16u, std::bit_floor(static_cast<unsigned>(kLongestFrameSeconds * inSampleRate)));
	mTransform.emplace(mFrameSize);
	mWeights = inWeights;
	mAnalysisWindow = MakeBlackmanWindow(mFrameSize);
	// The mean of the product of both windows is 0.42 * 0.5 + 0.5 * 0.5 / 2.
	mSynthesisWindow = MakeHannWindow(mFrameSize, 1.0 / (kOverlap * 0.335));
	mSpectra.resize(inWeights.size() * mFrameSize);
	mOutput.resize(inWeights.size() * mFrameSize);
	mCoverage.resize(mFrameSize);
	for (auto* const spectrum : {&mSum, &mEarlier, &mLast})
	{
		spectrum->resize(mFrameSize);
	}
	for (auto* const bins : {&mPowers, &mEarlierPowers, &mLastPowers, &mCosines, &mSines})
	{
		bins->resize(mFrameSize / 2 + 1);
	}
}

void PhaseVocoder::Begin(float const* inSound)
{
	Analyse(inSound, mLast.data());
	MeasurePowers(mLast, mLastPowers);
	std::fill(mOutput.begin(), mOutput.end(), 0.0f);
	std::fill(mCoverage.begin(), mCoverage.end(), 0.0f);
}

bool PhaseVocoder::AddFrame(SampleHistory const& inSource, SampleHistory const& inSound, std::int64_t inPlace)
{
	std::int64_t const start = inPlace - mFrameSize / 2;
	Analyse(inSound.At(0, start - GetHop()), mEarlier.data());
	MeasurePowers(mEarlier, mEarlierPowers);
	if (MeasureChange(mLastPowers, mEarlierPowers) > kLargestChange)
	{
		return false;
	}
	for (unsigned channel = 0; channel < mWeights.size(); ++channel)
	{
		Analyse(inSource.At(channel, start), mSpectra.data() + channel * mFrameSize);
	}
	SumSpectra();
	MeasurePowers(mSum, mPowers);
	if (MeasureChange(mPowers, mEarlierPowers) > kLargestChange)
	{
		return false;
	}
	FindAngles();
	Turn(mSum.data());
	mLast.swap(mSum);
	mLastPowers.swap(mPowers);
	for (unsigned channel = 0; channel < mWeights.size(); ++channel)
	{
		Synthesise(channel);
	}
	for (unsigned i = 0; i < mFrameSize; ++i)
	{
		mCoverage[i] += mAnalysisWindow[i] * mSynthesisWindow[i];
	}
	return true;
}

void PhaseVocoder::Advance()
{
	unsigned const hop = GetHop();
	auto const shift = [&](float* ioSamples)
	{
		std::copy(ioSamples + hop, ioSamples + mFrameSize, ioSamples);
		std::fill_n(ioSamples + mFrameSize - hop, hop, 0.0f);
	};
	for (unsigned channel = 0; channel < mWeights.size(); ++channel)
	{
		shift(mOutput.data() + channel * mFrameSize);
	}
	shift(mCoverage.data());
}

void PhaseVocoder::Analyse(float const* inSamples, float* outSpectrum)
{
	for (unsigned i = 0; i < mFrameSize; ++i)
	{
		outSpectrum[i] = mAnalysisWindow[i] * inSamples[i];
	}
	mTransform->Forward(outSpectrum);
}

void PhaseVocoder::SumSpectra()
{
	std::fill(mSum.begin(), mSum.end(), 0.0f);
	for (unsigned channel = 0; channel < mWeights.size(); ++channel)
	{
		float const weight = mWeights[channel];
		float const* const spectrum = mSpectra.data() + channel * mFrameSize;
		for (unsigned i = 0; i < mFrameSize; ++i)
		{
			mSum[i] += weight * spectrum[i];
		}
	}
}

void PhaseVocoder::MeasurePowers(std::vector<float> const& inSpectrum, std::vector<float>& outPowers) const
{
	unsigned const half = mFrameSize / 2;
	outPowers[0] = inSpectrum[0] * inSpectrum[0];
	outPowers[half] = inSpectrum[half] * inSpectrum[half];
	for (unsigned bin = 1; bin < half; ++bin)
	{
		float const real = inSpectrum[bin];
		float const imaginary = inSpectrum[mFrameSize - bin];
		outPowers[bin] = real * real + imaginary * imaginary;
	}
}

// The power of the difference of the magnitudes by their powers together, from 0 to 1, with more weight for higher
// frequencies, at which there is less power.
double PhaseVocoder::MeasureChange(
	std::vector<float> const& inFirst, std::vector<float> const& inSecond) const
{
	// In lanes, so that compilers make vectors of them.
	constexpr unsigned lanes = 8;
	float common[lanes]{};
	float powers[lanes]{};
	for (unsigned start = 0; start < mFrameSize / 2; start += lanes)
	{
		for (unsigned lane = 0; lane < lanes; ++lane)
		{
			float const first = inFirst[start + lane];
			float const second = inSecond[start + lane];
			auto const weight = static_cast<float>(static_cast<int>(start + lane));
			common[lane] += weight * std::sqrt(first * second);
			powers[lane] += weight * (first + second);
		}
	}
	double const power = std::accumulate(powers, powers + lanes, 0.0);
	double const floor = kLeastPower * mFrameSize * mFrameSize;
	return power > floor ? 1.0 - 2.0 * std::accumulate(common, common + lanes, 0.0) / power : 1.0;
}

bool PhaseVocoder::IsPeak(unsigned inBin, float inFloor) const
{
	float const power = mPowers[inBin];
	return power > inFloor && power > mPowers[inBin - 1] && power >= mPowers[inBin + 1] &&
		   power > mPowers[inBin - 2] && power >= mPowers[inBin + 2];
}

// Regions meet where the power between two peaks is least. What is far below all else turns along with its neighbours.
void PhaseVocoder::FindAngles()
{
	unsigned const half = mFrameSize / 2;
	float const floor = kLeastPeak * *std::max_element(mPowers.begin(), mPowers.end());
	Region region{0, 0, 0};
	unsigned lowest = 0;
	for (unsigned bin = 2; bin + 2 <= half; ++bin)
	{
		if (IsPeak(bin, floor))
		{
			if (region.mPeak != 0)
			{
				region.mEnd = lowest;
				SetAngle(region);
				region.mFirst = lowest;
			}
			region.mPeak = bin;
			lowest = bin;
		}
		lowest = mPowers[bin] < mPowers[lowest] ? bin : lowest;
	}
	region.mEnd = half + 1;
	SetAngle(region);
	// Both of these stay real.
	mCosines[0] = mCosines[half] = 1.0f;
	mSines[0] = mSines[half] = 0.0f;
}

void PhaseVocoder::SetAngle(Region const& inRegion)
{
	auto const part = [&](std::vector<float> const& inSpectrum, unsigned inIndex)
	{ return static_cast<double>(inSpectrum[inIndex]); };
	unsigned const peak = inRegion.mPeak;
	unsigned const mirrored = (mFrameSize - peak) % mFrameSize;
	double const real =
		part(mLast, peak) * part(mEarlier, peak) + part(mLast, mirrored) * part(mEarlier, mirrored);
	double const imaginary =
		part(mLast, mirrored) * part(mEarlier, peak) - part(mLast, peak) * part(mEarlier, mirrored);
	double const length = std::sqrt(real * real + imaginary * imaginary);
	bool const isSound = peak != 0 && length > 1e-30;
	auto const first = static_cast<std::ptrdiff_t>(inRegion.mFirst);
	auto const end = static_cast<std::ptrdiff_t>(inRegion.mEnd);
	std::fill(
		mCosines.begin() + first, mCosines.begin() + end, isSound ? static_cast<float>(real / length) : 1.0f);
	std::fill(mSines.begin() + first, mSines.begin() + end,
		isSound ? static_cast<float>(imaginary / length) : 0.0f);
}

void PhaseVocoder::Turn(float* ioSpectrum) const
{
	float* const imaginaries = ioSpectrum + mFrameSize;
	for (std::ptrdiff_t bin = 1; bin < static_cast<std::ptrdiff_t>(mFrameSize / 2); ++bin)
	{
		float const cosine = mCosines[static_cast<std::size_t>(bin)];
		float const sine = mSines[static_cast<std::size_t>(bin)];
		float const real = ioSpectrum[bin];
		float const imaginary = imaginaries[-bin];
		ioSpectrum[bin] = cosine * real - sine * imaginary;
		imaginaries[-bin] = cosine * imaginary + sine * real;
	}
}

void PhaseVocoder::Synthesise(unsigned inChannel)
{
	float* const frame = mSpectra.data() + inChannel * mFrameSize;
	float* const output = mOutput.data() + inChannel * mFrameSize;
	Turn(frame);
	mTransform->Inverse(frame);
	for (unsigned i = 0; i < mFrameSize; ++i)
	{
		output[i] += mSynthesisWindow[i] * frame[i];
	}
}

} // namespace dsp::stretch::omega
