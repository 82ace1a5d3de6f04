#include "RampStretchDecoder.h"

#include "OmegaStretcher.h"
#include "StretchedInfo.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace SonaroHost
{

namespace
{

using dsp::stretch::omega::OmegaEngineKind;

constexpr unsigned kRampBlockFrames = 256;
// What the ratio may exceed the range of a ramp by, to get back to its place.
constexpr double kSteeringRoom = 1.05;

} // namespace

RampStretchDecoder::RampStretchDecoder(AudioFileInfo const& inRecording, std::unique_ptr<SoundDecoder> inFile)
	: BlockStretchDecoder(inRecording, std::move(inFile)),
	  mPositions(MakeRampPositions(inRecording)),
	  mIsBackwards(mPositions.IsBackwards(0))
{
}

std::unique_ptr<TimeStretcher> RampStretchDecoder::MakeStretcher()
{
	Stretch const& stretch = *GetRecording().mStretch;
	double const pitch = stretch.mPitch.ToDouble();
	OmegaStretcher::Limits const limits{
		static_cast<float>(pitch / (Stretch::kHighestSpeed * pitch * kSteeringRoom)),
		static_cast<float>(pitch / (Stretch::kLowestSpeed * pitch) * kSteeringRoom), kRampBlockFrames};
	auto const kind = stretch.mEngine == StretchEngine::kRubberBand ? OmegaEngineKind::kRubberBand
																	: OmegaEngineKind::kSplice;
	auto stretcher =
		std::make_unique<OmegaStretcher>(kind, limits, GetNumChannels(), GetRecording().mSampleRate);
	mOmega = stretcher.get();
	return stretcher;
}

Ratio RampStretchDecoder::GetConversion(TimeStretcher const&) const
{
	return GetRecording().mStretch->mPitch;
}

void RampStretchDecoder::PrepareBlock()
{
	unsigned const count = mOmega->GetOutput();
	double const way = GetPassed(GetPosition() + count) - mPassed;
	double const ratio = mOmega->SetRatio(count / std::max(way, 1.0e-3));
	mPassed += count / ratio;
}

double RampStretchDecoder::GetPassed(std::int64_t inFrame) const
{
	CurvePositions::Place const place = mPositions.Find(mIsBackwards ? -inFrame : inFrame);
	Stretch const& stretch = *GetRecording().mStretch;
	double const passed = static_cast<double>(place.mWhole - stretch.mStart.Floor()) +
						  std::ldexp(static_cast<double>(place.mFraction), -64) -
						  (stretch.mStart - Ratio(stretch.mStart.Floor())).ToDouble();
	return passed / stretch.mPitch.ToDouble();
}

std::int64_t RampStretchDecoder::FindEnd(std::int64_t inFileFrames) const
{
	if (inFileFrames >= GetRecording().mFileFrames)
	{
		return GetRecording().mFrames;
	}
	std::int64_t low = 0;
	std::int64_t high = GetRecording().mFrames;
	while (low < high)
	{
		std::int64_t const middle = std::midpoint(low, high);
		bool const isBefore = mPositions.Find(mIsBackwards ? -middle : middle).mWhole < inFileFrames;
		(isBefore ? low : high) = isBefore ? middle + 1 : middle;
	}
	return low;
}

} // namespace SonaroHost
