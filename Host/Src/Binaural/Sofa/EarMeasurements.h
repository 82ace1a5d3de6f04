#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace SonaroHost
{

// What both ears heard of impulses from many directions.
struct EarMeasurements
{
	static constexpr std::size_t kNumEars = 2;

	// In radians, to the left of the front and upwards.
	struct Direction
	{
		double mAzimuth = 0.0;
		double mElevation = 0.0;
		// By ear, in samples, before the first tap.
		std::array<double, kNumEars> mDelays{};
	};

	float const* GetResponse(std::size_t inDirection, std::size_t inEar) const
	{
		return mTaps.data() + (inDirection * kNumEars + inEar) * mNumTaps;
	}

	double mSampleRate = 0.0;
	std::size_t mNumTaps = 0;
	std::vector<Direction> mDirections;
	// By direction, ear and tap.
	std::vector<float> mTaps;
};

} // namespace SonaroHost
