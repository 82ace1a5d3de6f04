#include "ReferenceTimeScaler.h"

#include "zorvaudiodsp/FFT.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

namespace SN::Testing
{

namespace
{

using Complex = std::complex<double>;

constexpr float kTurn = 6.2831855f;

double Wide(float inValue)
{
	return static_cast<double>(inValue);
}

int Rounded(float inValue)
{
	return static_cast<int>(Wide(inValue) + 0.5);
}

std::size_t Wrap(std::int64_t inIndex, std::size_t inLength)
{
	auto const length = static_cast<std::int64_t>(inLength);
	return static_cast<std::size_t>((inIndex % length + length) % length);
}

// By halves, down to one number.
std::vector<Complex> TransformByHalves(std::vector<Complex> const& inNumbers, double inSign)
{
	std::size_t const half = inNumbers.size() / 2;
	if (half == 0)
	{
		return inNumbers;
	}
	std::vector<Complex> parts[2];
	for (std::size_t i = 0; i < inNumbers.size(); ++i)
	{
		parts[i % 2].push_back(inNumbers[i]);
	}
	std::vector<Complex> const even = TransformByHalves(parts[0], inSign);
	std::vector<Complex> const odd = TransformByHalves(parts[1], inSign);
	std::vector<Complex> result(inNumbers.size());
	for (std::size_t k = 0; k < half; ++k)
	{
		Complex const turned = odd[k] * std::polar(1.0, inSign * std::numbers::pi * static_cast<double>(k) /
															static_cast<double>(half));
		result[k] = even[k] + turned;
		result[k + half] = even[k] - turned;
	}
	return result;
}

// The square of a cosine times, if wanted, a sinc with zeros at multiples of inWidth.
Signal MakeWindow(int inHalf, int inWidth)
{
	Signal window;
	for (int n = -inHalf; n <= inHalf; ++n)
	{
		int const i = std::abs(n);
		double const cosine = std::cos(i * std::numbers::pi / (2 * inHalf));
		float value = static_cast<float>(cosine * cosine);
		if (i > 0 && inWidth > 0)
		{
			float const index = static_cast<float>(i);
			float const width = static_cast<float>(inWidth);
			// The nearest number to the sine, which sines in single precision are not on all systems.
			auto const sine = static_cast<float>(std::sin(static_cast<double>(index * 3.1415927f / width)));
			value *= sine * width / (index * 3.1415927f);
		}
		window.push_back(i == 0 ? 1.0f : value);
	}
	return window;
}

// Steps of 512.
std::int64_t WholeSteps(double inCount)
{
	return static_cast<std::int64_t>(inCount) / 512 * 512;
}

} // namespace

ReferenceTimeScaler::ReferenceTimeScaler(ScalerRequest const& inRequest, bool inUsesOwnTransform)
	: mUsesOwnTransform(inUsesOwnTransform),
	  mSampleRate(static_cast<float>(inRequest.mSampleRate)),
	  mPitchFactor(static_cast<float>(inRequest.mPitchFactor)),
	  mFFTSize(static_cast<int>(inRequest.mFFTSize)),
	  mEndOfInput(inRequest.mEndOfInput)
{
	int const lengths[] = {4 * mFFTSize - 1, 2 * mFFTSize - 1, mFFTSize - 1, mFFTSize / 2 - 1};
	mWindowLength = lengths[inRequest.mWindowMode];
	mHalf = (mWindowLength - 1) / 2;
	FindGeometry(inRequest.mRatio);
	mBinFrequency = mSampleRate / static_cast<float>(mFFTSize);
	mResampledSize = Rounded(static_cast<float>(mFFTSize) / mPitchFactor);
	mResampledSize += mResampledSize % 2;
	for (mInverseSize = 2; mInverseSize < mResampledSize; mInverseSize *= 2)
	{
	}
	mPitchFactor = static_cast<float>(mFFTSize) / static_cast<float>(mResampledSize);
	mResampledHop = static_cast<int>(static_cast<float>(mSynthesisHop) / mPitchFactor);
	MakeWindows();
	auto const ring = static_cast<std::size_t>(4 * mWindowLength);
	mAnalysisRing.resize(ring);
	mSynthesisRing.resize(ring);
	mSpectrum.resize(static_cast<std::size_t>(mFFTSize) + 2);
	mResynthesis.resize(static_cast<std::size_t>(mInverseSize) + 2);
	mPreviousPhase.resize(static_cast<std::size_t>(mFFTSize) / 2 + 1);
	mAccumulatedPhase.resize(static_cast<std::size_t>(mInverseSize) / 2 + 1);
	mAnalysisPosition = mHalf % mAnalysisHop - mHalf;
	mSamplesPerHop = mHalf % mAnalysisHop + 1;
	mSynthesisPosition =
		static_cast<std::int64_t>(mRatio / mPitchFactor * static_cast<float>(mAnalysisPosition));
	mAnalysisFrameRate = mSampleRate / static_cast<float>(mAnalysisHop);
	mSynthesisFrameRate = mSampleRate / static_cast<float>(mSynthesisHop);
	mInputLimit = static_cast<float>(std::trunc(Wide(mSampleRate) * 7.0));
	mOutputLimit = static_cast<float>(std::trunc(Wide(mRatio * mSampleRate) * 7.0 / Wide(mPitchFactor)));
	FindGeometry(inRequest.mRatio);
}

void ReferenceTimeScaler::FindGeometry(double inRatio)
{
	mRatio = static_cast<float>(inRatio);
	if (mPitchFactor != 1.0f)
	{
		mRatio *= mPitchFactor;
	}
	float const eighths = mRatio <= 1.0f ? 8.0f : 8.0f * mRatio;
	mAnalysisHop = Rounded(static_cast<float>(mWindowLength + 1) / eighths);
	mSynthesisHop = Rounded(static_cast<float>(mAnalysisHop) * mRatio);
	mRatio = static_cast<float>(mSynthesisHop) / static_cast<float>(mAnalysisHop);
}

void ReferenceTimeScaler::MakeWindows()
{
	mAnalysisWindow = MakeWindow(mHalf, mWindowLength > mFFTSize ? mFFTSize : 0);
	mSynthesisWindow = MakeWindow(mHalf, mResampledHop);
	double sum = 0.0;
	for (float const element : mAnalysisWindow)
	{
		sum += Wide(element);
	}
	float const scale = static_cast<float>(2.0 / sum);
	for (float& element : mAnalysisWindow)
	{
		element *= scale;
	}
	for (float& element : mSynthesisWindow)
	{
		element *= static_cast<float>(1.0 / Wide(scale));
	}
}

unsigned ReferenceTimeScaler::CountInput(unsigned inNumOutput)
{
	std::int64_t const steps = WholeSteps(inNumOutput / GetRatio());
	bool const isFirst = std::exchange(mIsFirst, false);
	std::int64_t const count = isFirst                         ? steps + (mRatio > 1.0f ? 8704 : 25088)
							   : mSurplus.size() < inNumOutput ? steps + 512
															   : 0;
	return static_cast<unsigned>(count);
}

unsigned ReferenceTimeScaler::CountOutput(unsigned inNumInput)
{
	std::int64_t const steps = WholeSteps(inNumInput * GetRatio());
	if (!std::exchange(mIsFirst, false))
	{
		return static_cast<unsigned>(steps + 512);
	}
	unsigned const least = mRatio > 1.0f ? 8192 : 24576;
	return inNumInput < least ? 0 : static_cast<unsigned>(std::max<std::int64_t>(steps - least + 512, 0));
}

Signal ReferenceTimeScaler::Process(Signal const& inInput, unsigned inNumOutput)
{
	std::size_t const waiting = std::min<std::size_t>(mSurplus.size(), inNumOutput);
	bool const isEnough = mSurplus.size() > inNumOutput;
	auto const taken = mSurplus.begin() + static_cast<std::ptrdiff_t>(waiting);
	Signal output(mSurplus.begin(), taken);
	mSurplus.erase(mSurplus.begin(), taken);
	for (std::size_t next = 0; !isEnough;)
	{
		while (mSamplesSinceHop < mSamplesPerHop)
		{
			if (next == inInput.size())
			{
				return output;
			}
			float const x = inInput[next++];
			mInput.Update(x, mInputLimit);
			mAnalysisRing[mWriteIndex] = x;
			mWriteIndex = (mWriteIndex + 1) % mAnalysisRing.size();
			++mInputCount;
			++mSamplesSinceHop;
		}
		mSamplesSinceHop = 0;
		Fold();
		Transform(mSpectrum, mFFTSize, false);
		Analyse();
		Synthesise();
		Transform(mResynthesis, mInverseSize, true);
		Add();
		std::int64_t const before = mOutputCount;
		GiveOut(output, inNumOutput);
		bool const hasEnded = mSamplesPerHop == 0 && mOutputCount == before;
		NextFrame();
		if (hasEnded)
		{
			return output;
		}
	}
	return output;
}

void ReferenceTimeScaler::Fold()
{
	for (int i = mSamplesPerHop; mAnalysisPosition > 0 && i < mAnalysisHop; ++i)
	{
		mAnalysisRing[mWriteIndex] = 0.0f;
		mWriteIndex = (mWriteIndex + 1) % mAnalysisRing.size();
	}
	std::fill(mSpectrum.begin(), mSpectrum.end(), 0.0f);
	for (int n = -mHalf; n <= mHalf; ++n)
	{
		float const product = mAnalysisRing[Wrap(mAnalysisPosition + n, mAnalysisRing.size())] *
							  mAnalysisWindow[static_cast<std::size_t>(n + mHalf)];
		mSpectrum[Wrap(mAnalysisPosition + n, static_cast<std::size_t>(mFFTSize))] += product;
	}
}

void ReferenceTimeScaler::Transform(Signal& ioData, int inSize, bool inInverse) const
{
	if (mUsesOwnTransform)
	{
		dsp::FFT fft(static_cast<unsigned>(inSize));
		inInverse ? fft.Inverse(ioData.data()) : fft.Forward(ioData.data());
		return;
	}
	auto const size = static_cast<std::size_t>(inSize);
	std::vector<Complex> numbers(size);
	for (std::size_t i = 0; i < size; ++i)
	{
		if (!inInverse)
		{
			numbers[i] = Wide(ioData[i]);
		}
		else if (i <= size / 2)
		{
			numbers[i] = {Wide(ioData[i]), i % (size / 2) == 0 ? 0.0 : Wide(ioData[size - i])};
			numbers[(size - i) % size] = std::conj(numbers[i]);
		}
	}
	std::vector<Complex> const result = TransformByHalves(numbers, inInverse ? 1.0 : -1.0);
	for (std::size_t i = 0; i < size; ++i)
	{
		double const value = inInverse       ? result[i].real() / inSize
							 : i <= size / 2 ? result[i].real()
											 : result[size - i].imag();
		ioData[i] = static_cast<float>(value);
	}
}

void ReferenceTimeScaler::Analyse()
{
	std::fill(mResynthesis.begin(), mResynthesis.end(), 0.0f);
	for (int k = 0; k <= std::min(mFFTSize, mResampledSize) / 2; ++k)
	{
		auto const bin = static_cast<std::size_t>(k);
		float const re = mSpectrum[bin];
		float const im =
			k == 0 || k == mFFTSize / 2 ? 0.0f : mSpectrum[static_cast<std::size_t>(mFFTSize) - bin];
		float const magnitude = std::sqrt(re * re + im * im);
		float delta = 0.0f;
		if (magnitude != 0.0f)
		{
			float const phase = static_cast<float>(std::atan2(Wide(im), Wide(re)));
			delta = phase - mPreviousPhase[bin];
			mPreviousPhase[bin] = phase;
			if (delta > 3.1415927f)
			{
				delta -= kTurn;
			}
			if (delta < -3.1415927f)
			{
				delta += kTurn;
			}
		}
		mResynthesis[bin] = magnitude;
		if (k != 0 && k != mInverseSize / 2)
		{
			mResynthesis[static_cast<std::size_t>(mInverseSize) - bin] =
				mAnalysisFrameRate / kTurn * delta + static_cast<float>(k) * mBinFrequency;
		}
	}
	mAnalysisPosition += mAnalysisHop;
}

void ReferenceTimeScaler::Synthesise()
{
	for (int k = 0; k <= mResampledSize / 2; ++k)
	{
		auto const bin = static_cast<std::size_t>(k);
		auto const mirrored = static_cast<std::size_t>(mInverseSize) - bin;
		float const magnitude = mResynthesis[bin];
		bool const isReal = k == 0 || k == mInverseSize / 2;
		mAccumulatedPhase[bin] =
			isReal
				? 0.0f
				: mAccumulatedPhase[bin] + (mResynthesis[mirrored] - static_cast<float>(k) * mBinFrequency);
		double const x = Wide(mAccumulatedPhase[bin] * kTurn / mSynthesisFrameRate);
		mResynthesis[bin] = magnitude * static_cast<float>(std::cos(x));
		if (!isReal)
		{
			mResynthesis[mirrored] = magnitude * static_cast<float>(std::sin(x));
		}
	}
	for (int i = 0; mPitchFactor != 1.0f && i <= mResampledSize + 1; ++i)
	{
		mResynthesis[static_cast<std::size_t>(i)] /= mPitchFactor;
	}
}

void ReferenceTimeScaler::Add()
{
	Signal frame(mResynthesis.begin(), mResynthesis.begin() + mResampledSize);
	double const step = static_cast<double>(mInverseSize) / mResampledSize;
	double position = step;
	for (std::size_t i = 1; mInverseSize != mResampledSize && i < frame.size(); ++i, position += step)
	{
		auto const index = static_cast<std::size_t>(position);
		double const a = Wide(mResynthesis[index]);
		frame[i] = static_cast<float>(
			a + (Wide(mResynthesis[index + 1]) - a) * (position - static_cast<double>(index)));
	}
	for (int n = -mHalf; n <= mHalf; ++n)
	{
		float const product = frame[Wrap(mSynthesisPosition + n, frame.size())] *
							  mSynthesisWindow[static_cast<std::size_t>(n + mHalf)];
		mSynthesisRing[Wrap(mSynthesisPosition + n, mSynthesisRing.size())] += product;
	}
}

void ReferenceTimeScaler::GiveOut(Signal& ioOutput, unsigned inNumOutput)
{
	for (int i = 0; i < mFinal; ++i)
	{
		mOutput.Update(mSynthesisRing[Wrap(static_cast<std::int64_t>(mReadIndex) + i, mSynthesisRing.size())],
			mOutputLimit);
	}
	for (int i = 0; i < mFinal; ++i)
	{
		double const share = Wide(mRatio) / Wide(mPitchFactor);
		if (mOutputCount >= static_cast<std::int64_t>(share * static_cast<double>(mInputCount) + 0.5))
		{
			continue;
		}
		float sample = mSynthesisRing[mReadIndex];
		if (mInput.mVariance > 0.0f && mOutput.mVariance > 0.0f)
		{
			float const former = mEnergyGain;
			float const gain = std::sqrt(mInput.mVariance / mOutput.mVariance);
			mEnergyGain = gain;
			if (gain >= 0.2f && gain <= 5.0f)
			{
				mEnergyGain = 0.5f * gain + 0.5f * former;
				sample *= mEnergyGain;
			}
		}
		sample = std::clamp(sample, -1.0f, 1.0f);
		if (ioOutput.size() < inNumOutput)
		{
			ioOutput.push_back(sample);
		}
		else if (mSurplus.size() < 32768)
		{
			mSurplus.push_back(sample);
		}
		mSynthesisRing[mReadIndex] = 0.0f;
		mReadIndex = (mReadIndex + 1) % mSynthesisRing.size();
		++mOutputCount;
	}
}

void ReferenceTimeScaler::NextFrame()
{
	if (!mIsEndOfInput && mAnalysisPosition > 0 && mSamplesPerHop < mAnalysisHop)
	{
		mIsEndOfInput = true;
		mEndOfInput = mHalf - mAnalysisHop + mAnalysisPosition + mSamplesPerHop;
	}
	mSynthesisPosition += mResampledHop;
	mSamplesPerHop = mAnalysisHop;
	if (mHalf + mAnalysisPosition > mEndOfInput)
	{
		mSamplesPerHop = mHalf - mAnalysisHop + mAnalysisPosition > mEndOfInput
							 ? 0
							 : static_cast<int>(mEndOfInput + mAnalysisHop - mHalf - mAnalysisPosition);
	}
	std::int64_t valid = mSynthesisPosition - mHalf;
	if (mSynthesisPosition > mHalf + mSynthesisHop)
	{
		valid = mSynthesisHop;
	}
	else if (mSynthesisPosition <= mHalf)
	{
		valid = 0;
		auto const first = static_cast<std::ptrdiff_t>(std::max<std::int64_t>(mSynthesisPosition + mHalf, 0));
		std::fill(mSynthesisRing.begin() + first, mSynthesisRing.end(), 0.0f);
	}
	mFinal = static_cast<int>(static_cast<float>(valid) / mPitchFactor);
}

void ReferenceTimeScaler::Statistics::Update(float inX, float inLimit)
{
	float const c = mCount - 1.0f;
	float const n = std::min(std::max(mCount, 2.0f), inLimit);
	float const newMean = static_cast<float>((Wide(n) - 1.0) / Wide(n) * Wide(mMean) + Wide(inX) / Wide(n));
	mVariance =
		inX * inX / c + mMeanSquare - (inX / c + mMean) * (2.0f * newMean) + n / c * (newMean * newMean);
	mMean = newMean;
	mMeanSquare = c / n * mMeanSquare + inX * inX / n;
	mCount = n + 1.0f;
}

} // namespace SN::Testing
