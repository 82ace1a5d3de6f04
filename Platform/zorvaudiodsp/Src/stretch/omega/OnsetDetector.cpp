#include "stretch/omega/OnsetDetector.h"

#include <algorithm>
#include <cmath>

namespace dsp::stretch::omega
{

void OnsetDetector::Init(double inSampleRate)
{
	mFrameSize = std::max(4u, static_cast<unsigned>(inSampleRate / 1000.0));
	Reset(1.0f);
}

void OnsetDetector::Reset(float inSensitivity)
{
	mRise = inSensitivity > 0.0f ? std::max(4.0f / inSensitivity, 1.5f) : 0.0f;
	mFilled = 0;
	mEnergy = 0.0f;
	mLargest = 0.0f;
	mLastSample = 0.0f;
	mPosition = 0;
	mFormer.fill(0.0f);
	mFrame = 0;
	mNumOnsets = 0;
}

void OnsetDetector::Append(float const* inSamples, unsigned inCount)
{
	for (unsigned i = 0; i < inCount; ++i)
	{
		float const difference = std::fabs(inSamples[i] - mLastSample);
		mLastSample = inSamples[i];
		mEnergy += difference * difference;
		// Where the difference passes four times all that the frame had before: the start of what is largest in it.
		if (difference > 4.0f * mLargest)
		{
			mFirst = mPosition;
		}
		mLargest = std::max(mLargest, difference);
		++mPosition;
		if (++mFilled == mFrameSize)
		{
			EndFrame();
		}
	}
}

void OnsetDetector::EndFrame()
{
	// Rises below -80 dB are not heard as onsets.
	float const floor = 1e-8f * static_cast<float>(mFrameSize);
	float const former = *std::max_element(mFormer.begin(), mFormer.end());
	if (mRise > 0.0f && mEnergy > mRise * former && mEnergy > floor)
	{
		mOnsets[mNumOnsets % kNumOnsets] = mFirst;
		++mNumOnsets;
	}
	mFormer[mFrame % kNumFormer] = mEnergy;
	++mFrame;
	mFilled = 0;
	mEnergy = 0.0f;
	mLargest = 0.0f;
	mFirst = mPosition;
}

std::int64_t OnsetDetector::FindAfter(std::int64_t inPosition) const
{
	std::int64_t found = kNone;
	unsigned const known = std::min(mNumOnsets, kNumOnsets);
	for (unsigned i = 1; i <= known; ++i)
	{
		std::int64_t const onset = mOnsets[(mNumOnsets - i) % kNumOnsets];
		if (onset <= inPosition)
		{
			break;
		}
		found = onset;
	}
	return found;
}

std::int64_t OnsetDetector::FindUpTo(std::int64_t inPosition) const
{
	unsigned const known = std::min(mNumOnsets, kNumOnsets);
	for (unsigned i = 1; i <= known; ++i)
	{
		std::int64_t const onset = mOnsets[(mNumOnsets - i) % kNumOnsets];
		if (onset <= inPosition)
		{
			return onset;
		}
	}
	return kLongBefore;
}

} // namespace dsp::stretch::omega
