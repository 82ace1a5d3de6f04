#include "PannerReference.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace SN::Testing
{

namespace
{

constexpr double kPi = std::numbers::pi;
constexpr unsigned kLowFrequency = 3;

// What an output is made of: a sum of inputs, and the gain that it goes to.
struct Path
{
	std::function<double(long long inFrame)> mFeed;
	double mGain;
};

bool IsBalance(PanProcessorType inType)
{
	return inType == kPanBalance || inType == kPanBalanceWithIdentity;
}

std::vector<Path> MakeSurroundPaths(ReferenceRun const& inRun, std::vector<double> const& inControls)
{
	bool const isStereo = inRun.mType == kPanStereoTo51;
	auto const gains = GetSurroundReference({inControls[0], inControls[1], inControls[2]}, isStereo);
	auto const left = [&inRun](long long inFrame) { return inRun.mInput(0, inFrame); };
	auto const right = [&inRun, isStereo](long long inFrame)
	{ return inRun.mInput(isStereo ? 1 : 0, inFrame); };
	auto const middle = [left, right](long long inFrame) { return (left(inFrame) + right(inFrame)) / 2.0; };
	double const angle = kPi / 2.0 * inControls[0];
	auto const low = [=](long long inFrame)
	{ return isStereo ? left(inFrame) * std::cos(angle) + right(inFrame) * std::sin(angle) : left(inFrame); };
	return {{left, gains[0]}, {right, gains[1]}, {middle, gains[2]}, {low, inControls[3]}, {left, gains[3]},
		{right, gains[4]}};
}

std::vector<Path> MakePaths(ReferenceRun const& inRun, std::vector<double> const& inControls)
{
	if (inRun.mType == kPanMonoTo51 || inRun.mType == kPanStereoTo51)
	{
		return MakeSurroundPaths(inRun, inControls);
	}
	bool const isMono = inRun.mType == kPanMonoToStereo || inRun.mType == kPanMonoToAdaptive;
	auto const gains = inRun.mType == kPanMonoToStereo ? GetEqualPowerReference(inControls[0])
													   : GetSideKeepingReference(inControls[0]);
	std::vector<Path> paths;
	for (unsigned channel = 0; channel < (IsBalance(inRun.mType) ? 4 : 2); ++channel)
	{
		paths.push_back({[&inRun, input = isMono ? 0 : channel](long long inFrame)
			{ return inRun.mInput(input, inFrame); },
			gains[channel % 2]});
	}
	return paths;
}

// A gain on its way in a straight line.
class Ramp
{
public:
	Ramp(double inGain, double inLength)
		: mStart(inGain),
		  mTarget(inGain),
		  mLength(inLength)
	{
	}
	void GoTo(double inGain)
	{
		if (inGain != mTarget)
		{
			mStart = Now();
			mTarget = inGain;
			mPosition = 0.0;
		}
	}
	double Step()
	{
		double const gain = Now();
		mPosition += 1.0;
		return gain;
	}

private:
	double Now() const { return mStart + (mTarget - mStart) * std::min(1.0, mPosition / mLength); }

	double mStart;
	double mTarget;
	double mLength;
	double mPosition = 0.0;
};

} // namespace

std::array<double, 2> GetSideKeepingReference(double inPan)
{
	auto const side = [](double inShare) { return inShare < 0.5 ? std::sin(kPi * inShare) : 1.0; };
	return {side(1.0 - inPan), side(inPan)};
}

std::array<double, 2> GetEqualPowerReference(double inPan)
{
	return {std::cos(kPi / 2.0 * inPan), std::sin(kPi / 2.0 * inPan)};
}

std::array<double, 5> GetSurroundReference(SurroundReferencePosition const& inPosition, bool inIsStereo)
{
	double const x = inPosition.mX;
	double const quarter = kPi / 2.0;
	double const front = std::cos(quarter * inPosition.mY);
	double const rear = std::sin(quarter * inPosition.mY);
	auto const side = [&](double inShare, double inFar)
	{
		double const sides = std::cos(quarter * inPosition.mCenter);
		return std::sin(quarter * ((inShare - inFar) * sides + inFar)) * front;
	};
	double const farLeft = std::max(0.0, 1.0 - 2.0 * x);
	double const farRight = std::max(0.0, 2.0 * x - 1.0);
	double const middle = std::sin(kPi * x);
	double const phantom = middle * front * std::sin(quarter * inPosition.mCenter);
	if (inIsStereo)
	{
		return {side(std::min(1.0, 2.0 - 2.0 * x), farLeft), side(std::min(1.0, 2.0 * x), farRight), phantom,
			x > 0.5 ? middle * rear : rear, x > 0.5 ? rear : middle * rear};
	}
	return {side(1.0 - x, farLeft), side(x, farRight), phantom, std::cos(quarter * x) * rear,
		std::sin(quarter * x) * rear};
}

std::vector<double> RunReferenceFilter(double inRate, std::vector<double> const& inInput)
{
	double const w = 2.0 * kPi * 120.0 / inRate;
	double const alpha = std::sin(w) * std::sqrt(0.5);
	double const b = (1.0 - std::cos(w)) / 2.0 / (1.0 + alpha);
	double const a1 = 2.0 * std::cos(w) / (1.0 + alpha);
	double const a2 = (1.0 - alpha) / (1.0 + alpha);
	std::vector<double> out;
	double x1 = 0.0;
	double x2 = 0.0;
	double y1 = 0.0;
	double y2 = 0.0;
	for (double const x : inInput)
	{
		double const y = b * (x + 2.0 * x1 + x2) + a1 * y1 - a2 * y2;
		x2 = x1;
		x1 = x;
		y2 = y1;
		y1 = y;
		out.push_back(y);
	}
	return out;
}

std::vector<std::vector<double>> RunReference(ReferenceRun const& inRun)
{
	// 15 ms, since the first block is a jump; a balance moves in steps.
	double const length =
		IsBalance(inRun.mType) ? 1e-9 : std::max(1.0, std::round(inRun.mRate * static_cast<double>(0.015f)));
	std::vector<Ramp> ramps;
	std::vector<std::vector<double>> feeds;
	std::vector<std::vector<double>> gains;
	for (std::size_t block = 0; block < inRun.mControls.size(); ++block)
	{
		auto const paths = MakePaths(inRun, inRun.mControls[block]);
		feeds.resize(paths.size());
		gains.resize(paths.size());
		for (std::size_t channel = 0; channel < paths.size(); ++channel)
		{
			if (block == 0)
			{
				ramps.emplace_back(paths[channel].mGain, length);
			}
			if (IsBalance(inRun.mType))
			{
				ramps[channel] = Ramp(paths[channel].mGain, length);
			}
			ramps[channel].GoTo(paths[channel].mGain);
			for (unsigned i = 0; i < inRun.mBlockFrames; ++i)
			{
				feeds[channel].push_back(
					paths[channel].mFeed(static_cast<long long>(block * inRun.mBlockFrames + i)));
				gains[channel].push_back(ramps[channel].Step());
			}
		}
	}
	if (feeds.size() > kLowFrequency && !IsBalance(inRun.mType))
	{
		feeds[kLowFrequency] = RunReferenceFilter(inRun.mRate, feeds[kLowFrequency]);
	}
	for (std::size_t channel = 0; channel < feeds.size(); ++channel)
	{
		std::transform(feeds[channel].begin(), feeds[channel].end(), gains[channel].begin(),
			feeds[channel].begin(), std::multiplies<>());
	}
	return feeds;
}

} // namespace SN::Testing
