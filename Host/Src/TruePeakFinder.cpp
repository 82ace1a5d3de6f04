#include "TruePeakFinder.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace SonaroHost
{

namespace
{

constexpr std::size_t kTaps = 49;

double GetTap(std::size_t inIndex, std::size_t inFactor)
{
	constexpr double kMiddle = (kTaps - 1) / 2.0;
	double const angle =
		std::numbers::pi * (static_cast<double>(inIndex) - kMiddle) / static_cast<double>(inFactor);
	double const sinc = angle == 0.0 ? 1.0 : std::sin(angle) / angle;
	double const turn = 2.0 * std::numbers::pi * static_cast<double>(inIndex) / (kTaps - 1);
	return sinc * 0.5 * (1.0 - std::cos(turn));
}

} // namespace

TruePeakFinder::TruePeakFinder(unsigned inChannels, int inSampleRate)
{
	std::size_t const factor = inSampleRate < 96000 ? 4 : inSampleRate < 192000 ? 2 : 1;
	if (factor > 1)
	{
		mCentre = (kTaps - 1) / 2 / factor;
		mSpan = 2 * mCentre + 1;
		// The phase 0 is the sample itself.
		for (std::size_t phase = 1; phase < factor; ++phase)
		{
			std::vector<double>& taps = mPhases.emplace_back().mTaps;
			for (std::size_t index = phase; index < kTaps; index += factor)
			{
				taps.push_back(GetTap(index, factor));
			}
		}
	}
	mHistories.assign(inChannels, std::vector<float>(2 * mSpan));
}

double TruePeakFinder::Process(float const* inFrame)
{
	mNewest = mNewest == 0 ? mSpan - 1 : mNewest - 1;
	double peak = 0.0;
	for (std::vector<float>& history : mHistories)
	{
		history[mNewest] = *inFrame;
		history[mNewest + mSpan] = *inFrame++;
		float const* const newest = history.data() + mNewest;
		peak = std::max(peak, static_cast<double>(std::fabs(newest[mCentre])));
		for (Phase const& phase : mPhases)
		{
			double sum = 0.0;
			for (std::size_t i = 0; i < phase.mTaps.size(); ++i)
			{
				sum += phase.mTaps[i] * static_cast<double>(newest[i]);
			}
			peak = std::max(peak, std::fabs(sum));
		}
	}
	return peak;
}

} // namespace SonaroHost
