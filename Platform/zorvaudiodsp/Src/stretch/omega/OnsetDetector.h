#pragma once

#include <array>
#include <cstdint>

namespace dsp::stretch::omega
{

// Finds where sounds set in: places where the energy of the differences between neighbouring samples rises by 6 dB or
// more within a millisecond, above all that the last 15 milliseconds had. No allocation.
class OnsetDetector
{
public:
	void Init(double inSampleRate);
	// inSensitivity: 1 for 6 dB, more for less, 0 for never.
	void Reset(float inSensitivity);

	// Takes the samples from where the last ones ended.
	void Append(float const* inSamples, unsigned inCount);

	// The first onset after inPosition, or kNone. Of older ones than the last 256, nothing is known.
	std::int64_t FindAfter(std::int64_t inPosition) const;
	// The last one up to inPosition, or a place far before the start.
	std::int64_t FindUpTo(std::int64_t inPosition) const;

	static constexpr std::int64_t kNone = INT64_MAX;

private:
	static constexpr unsigned kNumOnsets = 256;
	static constexpr unsigned kNumFormer = 15;
	static constexpr std::int64_t kLongBefore = INT64_MIN / 2;

	void EndFrame();

	unsigned mFrameSize = 1;
	float mRise = 4.0f;
	// Of the frame at hand: samples so far, energy, and where its largest difference and the first one of a quarter of
	// that lie.
	unsigned mFilled = 0;
	float mEnergy = 0.0f;
	float mLargest = 0.0f;
	std::int64_t mFirst = 0;
	float mLastSample = 0.0f;
	std::int64_t mPosition = 0;
	std::array<float, kNumFormer> mFormer{};
	unsigned mFrame = 0;
	// The onsets in their order, in a ring.
	std::array<std::int64_t, kNumOnsets> mOnsets{};
	unsigned mNumOnsets = 0;
};

} // namespace dsp::stretch::omega
