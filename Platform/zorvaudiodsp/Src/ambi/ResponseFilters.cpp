#include "ambi/ResponseFilters.h"

#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace dsp::ambi
{

namespace
{

constexpr double kPi = std::numbers::pi;
// How far a sinc reaches, in its own zero crossings.
constexpr double kReach = 24.0;

// A set and where its first tap lies in the data of an ear.
struct FoundSet
{
	ResponseSet mSet;
	std::size_t mFirst = 0;
};

FoundSet FindNearestSet(ResponseDescriptor const& inDescriptor, unsigned inSampleRate)
{
	FoundSet found;
	double least = std::numeric_limits<double>::infinity();
	std::size_t first = 0;
	for (unsigned i = 0; i < inDescriptor.mNumSets; ++i)
	{
		ResponseSet const& set = inDescriptor.mSets[i];
		if (set.mSampleRate > 0 && set.mNumTaps > 0)
		{
			double const distance =
				std::fabs(zorvcore::math::Log(static_cast<double>(set.mSampleRate) / inSampleRate));
			if (distance < least)
			{
				least = distance;
				found = {set, first};
			}
		}
		first += std::size_t{set.mNumTaps} * inDescriptor.mNumResponses;
	}
	return found;
}

// A sinc under a Hann window, 1 at 0.
double GetKernel(double inPosition)
{
	if (inPosition == 0.0)
	{
		return 1.0;
	}
	double const window = 0.5 + 0.5 * zorvcore::math::Cos(kPi * inPosition / kReach);
	return std::fabs(inPosition) < kReach
			   ? window * zorvcore::math::Sin(kPi * inPosition) / (kPi * inPosition)
			   : 0.0;
}

std::size_t CountResampled(std::size_t inTaps, double inStep)
{
	return static_cast<std::size_t>(std::ceil(static_cast<double>(inTaps) / inStep));
}

std::vector<double> Resample(std::vector<double> const& inTaps, unsigned inFromRate, unsigned inToRate)
{
	double const step = static_cast<double>(inFromRate) / inToRate;
	double const bandwidth = std::min(1.0, 1.0 / step);
	std::vector<double> taps(CountResampled(inTaps.size(), step));
	for (std::size_t i = 0; i < taps.size(); ++i)
	{
		for (std::size_t k = 0; k < inTaps.size(); ++k)
		{
			double const distance = static_cast<double>(i) * step - static_cast<double>(k);
			taps[i] += step * bandwidth * inTaps[k] * GetKernel(bandwidth * distance);
		}
	}
	return taps;
}

} // namespace

EarConvolver::Filters MakeResponseFilters(ResponseDescriptor const& inDescriptor,
	float const* const (&inData)[EarConvolver::kNumEars], unsigned inSampleRate)
{
	EarConvolver::Filters filters;
	FoundSet const found = FindNearestSet(inDescriptor, inSampleRate);
	unsigned const numTaps = found.mSet.mNumTaps;
	for (unsigned ear = 0; ear < EarConvolver::kNumEars && numTaps > 0; ++ear)
	{
		for (unsigned input = 0; input < EarConvolver::kNumInputs; ++input)
		{
			std::vector<double> taps(numTaps);
			for (unsigned response = 0; response < inDescriptor.mNumResponses; ++response)
			{
				FieldGains const& gains = inDescriptor.mGains[response];
				double const gain = std::array{gains.mW, gains.mY, gains.mZ, gains.mX}[input];
				float const* const from = inData[ear] + found.mFirst + std::size_t{response} * numTaps;
				std::transform(taps.begin(), taps.end(), from, taps.begin(),
					[gain](double inSum, float inTap) { return inSum + gain * inTap; });
			}
			if (found.mSet.mSampleRate != inSampleRate)
			{
				taps = Resample(taps, found.mSet.mSampleRate, inSampleRate);
			}
			std::transform(taps.begin(), taps.end(), std::back_inserter(filters[ear][input]),
				[](double inTap) { return static_cast<float>(inTap); });
		}
	}
	return filters;
}

unsigned CountTaps(ResponseDescriptor const& inDescriptor, unsigned inSampleRate)
{
	ResponseSet const set = FindNearestSet(inDescriptor, inSampleRate).mSet;
	bool const isResampled = set.mNumTaps > 0 && set.mSampleRate != inSampleRate;
	return isResampled ? static_cast<unsigned>(CountResampled(
							 set.mNumTaps, static_cast<double>(set.mSampleRate) / inSampleRate))
					   : set.mNumTaps;
}

} // namespace dsp::ambi
