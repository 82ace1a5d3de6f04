#include "Time/Resampler/AudioResamplerSinc.h"

#include "Sonaro/AudioUtilities.h"
#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>
#include <cmath>

namespace SN
{

namespace
{

using zorvaccelerate::utility::Copy;
using zorvaccelerate::utility::Zero;

constexpr double kLargestRatio = 100.0;
constexpr double kSmallestRatio = 0.04;
constexpr unsigned kLargestInputOutOfRange = 2048;

unsigned long long RoundUp(unsigned long long inCount, unsigned inMultiple)
{
	return (inCount + inMultiple - 1) / inMultiple * inMultiple;
}

} // namespace

void AudioResamplerSinc::Init(
	FrameRate const& inInputRate, FrameRate const& inOutputRate, unsigned inNumChannels, bool inHighQuality)
{
	StoreRates(inInputRate, inOutputRate);
	mNumChannels = inNumChannels;
	mRatio = GetRatio();
	Reset();
	mIsOutOfRange = !(mRatio >= kSmallestRatio && mRatio <= kLargestRatio);
	if (mIsOutOfRange)
	{
		return;
	}
	mFilter = SincFilter::GetShared(mRatio, inHighQuality);
	mStepsAreWhole = mFilter->GetIncrement() == static_cast<float>(mFilter->GetIntegerStep());
	mCoefficients.resize(mStepsAreWhole ? 0 : kBatch * static_cast<std::size_t>(mFilter->GetNumTaps()));
	SizeRing();
	mOverflow.Init(mNumChannels, inHighQuality ? 262144 : 65536);
	mOverflowCount = 0;
	mInputPointers.resize(mNumChannels);
}

void AudioResamplerSinc::SizeRing()
{
	auto const span = static_cast<unsigned>(mFilter->GetHalfTaps()) * 16;
	mRingSize = span == 0 ? 2 : std::bit_floor(span) * 4;
	mRefillBlock = mRingSize / 2;
	mDelayLine.Init(mNumChannels, mRingSize + static_cast<unsigned>(mFilter->GetNumTaps()));
	mWriteIndex = 0;
	mIsPriming = true;
}

void AudioResamplerSinc::Reset()
{
	mIsFirstBlock = true;
}

unsigned AudioResamplerSinc::GetOutputSampleCount(unsigned inNumInput)
{
	return mIsOutOfRange ? 1 : ToCount(mRatio * inNumInput);
}

unsigned AudioResamplerSinc::GetInputSampleCount(unsigned inNumOutput)
{
	if (mIsOutOfRange)
	{
		// The count modulo 2^32, as far as 64 bits hold it.
		double const count = inNumOutput * mRatio;
		auto const low = std::abs(count) < 0x1p63 ? static_cast<unsigned>(static_cast<long long>(count)) : 0u;
		return low == 0 ? 1 : std::min(low, kLargestInputOutOfRange);
	}
	if (mRingSize == 0)
	{
		return 0;
	}
	auto const needed = RoundUp(static_cast<unsigned long long>(inNumOutput * mRatio), mRefillBlock);
	if (mIsFirstBlock)
	{
		mIsFirstBlock = false;
		auto const primed = mRingSize - 1 + needed + mRefillBlock;
		auto const whole = primed / mRefillBlock * mRefillBlock;
		return ToCount(static_cast<double>(whole));
	}
	return mOverflowCount < inNumOutput ? ToCount(static_cast<double>(needed)) : 0;
}

void AudioResamplerSinc::Process(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput, unsigned inNumOutput)
{
	if (mIsOutOfRange || mRingSize == 0)
	{
		outOutput.Zero();
		return;
	}
	Block block{
		.mInput = inInput,
		.mOutput = outOutput,
		.mNumInput = inNumInput,
		.mNumOutput = std::min(inNumOutput, outOutput.GetCapacity()),
	};
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		mInputPointers[channel] = inInput.IsChannelSilent(channel) ? nullptr : inInput.GetChannel(channel);
	}
	if (mIsPriming)
	{
		Prime(block);
		MakeSamples(block);
	}
	else if (TakeSurplus(block))
	{
		mAvailableCount += inNumInput;
		MakeSamples(block);
	}
	Finish(block);
}

void AudioResamplerSinc::Prime(Block& ioBlock)
{
	unsigned const primingLag = mRingSize / 2;
	mAvailableCount = ioBlock.mNumInput - primingLag;
	unsigned const filled = std::min(mAvailableCount, mRingSize);
	CopyToRing(ioBlock, 0, filled);
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		float* const ring = mDelayLine.GetChannel(channel);
		std::fill(ring + filled, ring + mRingSize, 0.0f);
	}
	mRefillThreshold = mRingSize;
	mCentreIndex = 0;
	mConsumedCount = 0;
	mPhase = 0.0f;
	mIntPhase = 0;
	mIsPriming = false;
}

bool AudioResamplerSinc::TakeSurplus(Block& ioBlock)
{
	unsigned const taken = std::min(mOverflowCount, ioBlock.mNumOutput);
	unsigned const left = mOverflowCount - taken;
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		float* const surplus = mOverflow.GetChannel(channel);
		if (float* const output = ioBlock.mOutput.GetChannel(channel))
		{
			Copy(taken, surplus, output);
		}
		std::copy_n(surplus + taken, left, surplus);
	}
	ioBlock.mProduced = taken;
	mOverflowCount = left;
	return left == 0;
}

void AudioResamplerSinc::MakeSamples(Block& ioBlock)
{
	// The difference is compared, so that the counters may wrap around, and an input that was too short for priming
	// gives nothing.
	while (static_cast<int>(mAvailableCount - mConsumedCount) > 0)
	{
		AddPosition();
		if (mNumPositions == kBatch)
		{
			FlushBatch(ioBlock);
		}
		Advance(ioBlock);
	}
	FlushBatch(ioBlock);
}

void AudioResamplerSinc::AddPosition()
{
	auto const halfTaps = static_cast<unsigned>(mFilter->GetHalfTaps());
	unsigned const first = (mCentreIndex < halfTaps ? mCentreIndex + mRingSize : mCentreIndex) - halfTaps + 1;
	int const row = mStepsAreWhole ? mIntPhase : static_cast<int>(mPhase);
	mPositions[mNumPositions++] = {first, row, mStepsAreWhole ? 0.0f : mPhase - static_cast<float>(row)};
}

void AudioResamplerSinc::Advance(Block& ioBlock)
{
	if (mStepsAreWhole)
	{
		mIntPhase += mFilter->GetIntegerStep();
		while (mIntPhase >= mFilter->GetOversampling())
		{
			mIntPhase -= mFilter->GetOversampling();
			StepInput(ioBlock);
		}
		return;
	}
	auto const oversampling = static_cast<float>(mFilter->GetOversampling());
	mPhase += mFilter->GetIncrement();
	while (mPhase >= oversampling)
	{
		mPhase -= oversampling;
		StepInput(ioBlock);
	}
}

void AudioResamplerSinc::StepInput(Block& ioBlock)
{
	++mCentreIndex;
	++mConsumedCount;
	if (mCentreIndex + 1 + static_cast<unsigned>(mFilter->GetHalfTaps()) >= mRefillThreshold)
	{
		// What waits in the batch still reads the samples that go.
		FlushBatch(ioBlock);
		mRefillThreshold += mRefillBlock;
		mWriteIndex = mWriteIndex == mRingSize ? 0 : mWriteIndex;
		CopyToRing(ioBlock, mWriteIndex, mRefillBlock);
		mWriteIndex += mRefillBlock;
	}
	if (mCentreIndex == mRingSize)
	{
		mCentreIndex = 0;
		mRefillThreshold = mRefillBlock;
	}
}

void AudioResamplerSinc::CopyToRing(Block& ioBlock, unsigned inRingIndex, unsigned inCount)
{
	unsigned const capacity = ioBlock.mInput.GetCapacity();
	unsigned const inside = std::min(inCount, capacity - std::min(capacity, ioBlock.mInputCursor));
	auto const numTaps = static_cast<unsigned>(mFilter->GetNumTaps());
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		float* const ring = mDelayLine.GetChannel(channel);
		float const* const input = mInputPointers[channel];
		unsigned const copied = input ? inside : 0;
		if (copied > 0)
		{
			Copy(copied, input + ioBlock.mInputCursor, ring + inRingIndex);
		}
		Zero(inCount - copied, ring + inRingIndex + copied);
		std::copy_n(ring, numTaps, ring + mRingSize);
	}
	ioBlock.mInputCursor += inCount;
}

void AudioResamplerSinc::FlushBatch(Block& ioBlock)
{
	unsigned const toOutput = std::min(mNumPositions, ioBlock.mNumOutput - ioBlock.mProduced);
	// What finds no room at all is dropped.
	unsigned const toOverflow = std::min(mNumPositions - toOutput, mOverflow.GetCapacity() - mOverflowCount);
	if (toOutput + toOverflow > 0)
	{
		if (!mStepsAreWhole)
		{
			InterpolateCoefficients();
		}
		for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
		{
			std::array<float, kBatch> samples;
			FilterBatch(channel, samples.data());
			if (float* const output = ioBlock.mOutput.GetChannel(channel))
			{
				std::copy_n(samples.data(), toOutput, output + ioBlock.mProduced);
			}
			std::copy_n(
				samples.data() + toOutput, toOverflow, mOverflow.GetChannel(channel) + mOverflowCount);
		}
	}
	ioBlock.mProduced += toOutput;
	mOverflowCount += toOverflow;
	mNumPositions = 0;
}

void AudioResamplerSinc::InterpolateCoefficients()
{
	auto const numTaps = static_cast<unsigned>(mFilter->GetNumTaps());
	for (unsigned i = 0; i < mNumPositions; ++i)
	{
		Position const& position = mPositions[i];
		zorvaccelerate::utility::InterpolateCoefficients(numTaps, mFilter->GetRow(position.mRow),
			mFilter->GetRow(position.mRow - 1), position.mFraction, mCoefficients.data() + i * numTaps);
	}
}

void AudioResamplerSinc::FilterBatch(unsigned long long inChannel, float* outSamples) const
{
	using zorvaccelerate::utility::FilterEight;
	auto const numTaps = static_cast<unsigned>(mFilter->GetNumTaps());
	float const* const ring = mDelayLine.GetChannel(inChannel);
	std::array<float const*, kBatch> samples;
	std::array<float const*, kBatch> rows;
	std::array<double const*, kBatch> coefficients;
	for (unsigned i = 0; i < kBatch; ++i)
	{
		// A batch that is not full is filled up with its first output.
		unsigned const position = i < mNumPositions ? i : 0;
		samples[i] = ring + mPositions[position].mFirst;
		rows[i] = mFilter->GetRow(mPositions[position].mRow);
		// Whole steps need none.
		coefficients[i] = mCoefficients.empty() ? nullptr : mCoefficients.data() + position * numTaps;
	}
	if (mStepsAreWhole)
	{
		FilterEight(numTaps, rows.data(), samples.data(), outSamples);
	}
	else
	{
		FilterEight(numTaps, coefficients.data(), samples.data(), outSamples);
	}
}

void AudioResamplerSinc::Finish(Block& ioBlock) const
{
	for (unsigned long long channel = 0; channel < ioBlock.mOutput.GetNumChannels(); ++channel)
	{
		float* const output = ioBlock.mOutput.GetChannel(channel);
		bool const isOurs = channel < mNumChannels && output;
		if (isOurs)
		{
			std::fill(output + ioBlock.mProduced, output + ioBlock.mNumOutput, 0.0f);
		}
		ioBlock.mOutput.NoteChannelWrite(channel, isOurs ? ioBlock.mNumOutput : 0);
	}
}

} // namespace SN
