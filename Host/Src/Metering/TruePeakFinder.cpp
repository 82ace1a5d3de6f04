#include "TruePeakFinder.h"

#include "TruePeakTaps.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

TruePeakFinder::TruePeakFinder(unsigned inChannels, int inSampleRate)
{
	std::size_t const factor = GetTruePeakFactor(inSampleRate);
	if (factor > 1)
	{
		mCentre = (kTruePeakTaps - 1) / 2 / factor;
		mSpan = 2 * mCentre + 1;
		// The phase 0 is the sample itself.
		for (std::size_t phase = 1; phase < factor; ++phase)
		{
			std::vector<double>& taps = mPhases.emplace_back().mTaps;
			for (std::size_t index = phase; index < kTruePeakTaps; index += factor)
			{
				taps.push_back(GetTruePeakTap(index, factor));
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
