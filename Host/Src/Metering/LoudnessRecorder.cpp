#include "LoudnessRecorder.h"

#include "LoudnessGate.h"

#include <numeric>

namespace SonaroHost
{

namespace
{

// A steady tone is at its loudest at its first window, whatever its sums are rounded to.
constexpr double kEqualLoudness = 0.001;

} // namespace

LoudnessRecorder::LoudnessRecorder(double inSampleRate, unsigned inStretchFrames)
	: mSampleRate(inSampleRate),
	  mStretchFrames(inStretchFrames)
{
}

void LoudnessRecorder::Add(double inPower, float const* inFrames)
{
	std::size_t const before = mPowers.size() * mStretchFrames;
	mPowers.push_back(static_cast<float>(inPower));
	for (unsigned part = 0; part < kPartsOfStretch; ++part)
	{
		unsigned const first = mStretchFrames * part / kPartsOfStretch;
		unsigned const end = mStretchFrames * (part + 1) / kPartsOfStretch;
		AddPart(std::accumulate(inFrames + first, inFrames + end, 0.0),
			static_cast<double>(before + end) / mSampleRate);
	}
}

void LoudnessRecorder::AddPart(double inPower, double inSeconds)
{
	mParts[mPart % mParts.size()] = inPower;
	++mPart;
	Raise(kPartsOfMoment, inSeconds, mMomentary);
	Raise(kPartsOfShortTerm, inSeconds, mShortTerm);
}

// Windows begin and end at the same part of a stretch, so all have the same number of frames.
void LoudnessRecorder::Raise(std::size_t inParts, double inSeconds, LoudnessSeries::Maximum& ioMaximum) const
{
	if (mPart < inParts)
	{
		return;
	}
	double power = 0.0;
	for (std::size_t part = mPart - inParts; part < mPart; ++part)
	{
		power += mParts[part % mParts.size()];
	}
	double const loudness =
		ToLoudness(power * kPartsOfStretch / (static_cast<double>(inParts) * mStretchFrames));
	if (loudness > ioMaximum.mLoudness + kEqualLoudness)
	{
		ioMaximum = {loudness, inSeconds};
	}
}

LoudnessSeries LoudnessRecorder::GetSeries() const
{
	return {mStretchFrames / mSampleRate, mPowers, mMomentary, mShortTerm};
}

} // namespace SonaroHost
