#include "LoudnessGate.h"

#include "SonaroHost/Metering/LoudnessReading.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace SonaroHost
{

namespace
{

// The offset of BS.1770, at which a sine of 0 dBFS and 997 Hz in one channel measures -3.01 LUFS.
constexpr double kOffset = -0.691;
constexpr double kAbsoluteGate = -70.0;
// 10 LU below the loudness of what passes the absolute gate.
constexpr double kRelativeGate = 0.1;
// A hundred LU above the gate; the last one takes what is louder.
constexpr double kClassesPerUnit = 100.0;
constexpr std::size_t kClasses = 10000;

} // namespace

double ToLoudness(double inPower)
{
	return inPower > 0.0 ? kOffset + 10.0 * zorvcore::math::Log10(inPower) : LoudnessReading::kSilent;
}

double ToPower(double inLoudness)
{
	return zorvcore::math::Exp10((inLoudness - kOffset) / 10.0);
}

LoudnessGate::LoudnessGate(LoudnessMemory inMemory)
	: mIsGrowing(inMemory == LoudnessMemory::kGrowing),
	  mClasses(mIsGrowing ? 0 : kClasses)
{
}

void LoudnessGate::Add(double inPower)
{
	auto const count = static_cast<std::int64_t>(mStretches.size());
	mStretches[static_cast<std::size_t>(mStretch % count)] = inPower;
	++mStretch;
	if (mStretch >= count)
	{
		AddBlock(std::accumulate(mStretches.begin(), mStretches.end(), 0.0) / static_cast<double>(count));
	}
}

void LoudnessGate::AddBlock(double inPower)
{
	static double const sAbsoluteGate = ToPower(kAbsoluteGate);
	if (inPower < sAbsoluteGate)
	{
		return;
	}
	mAll.mPower += inPower;
	++mAll.mCount;
	if (mIsGrowing)
	{
		mPowers.push_back(inPower);
		return;
	}
	double const place = (ToLoudness(inPower) - kAbsoluteGate) * kClassesPerUnit;
	Blocks& blocks = mClasses[static_cast<std::size_t>(std::clamp(place, 0.0, double{kClasses - 1}))];
	blocks.mPower += inPower;
	++blocks.mCount;
}

double LoudnessGate::GetLoudness() const
{
	if (mAll.mCount == 0)
	{
		return LoudnessReading::kSilent;
	}
	double const gate = kRelativeGate * mAll.mPower / static_cast<double>(mAll.mCount);
	Blocks heard;
	for (double const power : mPowers)
	{
		heard.mPower += power >= gate ? power : 0.0;
		heard.mCount += power >= gate ? 1 : 0;
	}
	for (Blocks const& blocks : mClasses)
	{
		bool const isHeard = blocks.mPower >= gate * static_cast<double>(blocks.mCount);
		heard.mPower += isHeard ? blocks.mPower : 0.0;
		heard.mCount += isHeard ? blocks.mCount : 0;
	}
	return ToLoudness(heard.mPower / static_cast<double>(heard.mCount));
}

} // namespace SonaroHost
