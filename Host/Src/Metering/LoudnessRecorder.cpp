#include "LoudnessRecorder.h"

#include "LoudnessGate.h"

#include <numeric>

namespace SonaroHost
{

namespace
{

// A steady tone is at its loudest at its first window, whatever its sums are rounded to.
constexpr double kEqualLoudness = 0.001;

void Raise(double inLoudness, double inSeconds, LoudnessSeries::Maximum& ioMaximum)
{
	if (inLoudness > ioMaximum.mLoudness + kEqualLoudness)
	{
		ioMaximum = {inLoudness, inSeconds};
	}
}

} // namespace

LoudnessRecorder::LoudnessRecorder(double inSampleRate, unsigned inStretchFrames)
	: mSampleRate(inSampleRate),
	  mStretchFrames(inStretchFrames)
{
}

void LoudnessRecorder::Add(double inPower, float const* inFrames)
{
	AddParts(inFrames, mStretchFrames);
	mPowers.push_back(static_cast<float>(inPower));
}

void LoudnessRecorder::AddRest(
	float const* inFrames, unsigned inNumFrames, double inMomentary, double inShortTerm)
{
	AddParts(inFrames, inNumFrames);
	double const seconds = static_cast<double>(mPowers.size() * mStretchFrames + inNumFrames) / mSampleRate;
	if (mPart >= kPartsOfMoment)
	{
		Raise(inMomentary, seconds, mMomentary);
	}
	if (mPart >= kPartsOfShortTerm)
	{
		Raise(inShortTerm, seconds, mShortTerm);
	}
}

void LoudnessRecorder::AddParts(float const* inFrames, unsigned inNumFrames)
{
	unsigned first = 0;
	for (unsigned part = 1; part <= kPartsOfStretch; ++part)
	{
		unsigned const end = mStretchFrames * part / kPartsOfStretch;
		if (end > inNumFrames)
		{
			return;
		}
		AddPart(std::accumulate(inFrames + first, inFrames + end, 0.0),
			static_cast<double>(mPowers.size() * mStretchFrames + end) / mSampleRate);
		first = end;
	}
}

void LoudnessRecorder::AddPart(double inPower, double inSeconds)
{
	mParts[mPart % mParts.size()] = inPower;
	++mPart;
	Raise(GetRecent(kPartsOfMoment), inSeconds, mMomentary);
	Raise(GetRecent(kPartsOfShortTerm), inSeconds, mShortTerm);
}

// Windows begin and end at the same part of a stretch, so all have the same number of frames.
double LoudnessRecorder::GetRecent(std::size_t inParts) const
{
	if (mPart < inParts)
	{
		return LoudnessReading::kSilent;
	}
	double power = 0.0;
	for (std::size_t part = mPart - inParts; part < mPart; ++part)
	{
		power += mParts[part % mParts.size()];
	}
	return ToLoudness(power * kPartsOfStretch / (static_cast<double>(inParts) * mStretchFrames));
}

LoudnessSeries LoudnessRecorder::GetSeries() const
{
	return {mStretchFrames / mSampleRate, mPowers, mMomentary, mShortTerm};
}

} // namespace SonaroHost
