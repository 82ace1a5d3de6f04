#include "RampStretchDecoder.h"

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
	: mRecording(inRecording),
	  mNumChannels(inFile->GetNumChannels()),
	  mPositions(MakeRampPositions(inRecording)),
	  mIsBackwards(mPositions.IsBackwards(0)),
	  mDecoder(std::move(inFile))
{
	CheckIsBuiltIn(inRecording.mStretch->mEngine);
}

RampStretchDecoder::~RampStretchDecoder() = default;

std::int64_t RampStretchDecoder::Read(float* outSamples, std::int64_t inFrames)
{
	if (!mFile)
	{
		Start();
	}
	std::int64_t done = 0;
	while (done < inFrames)
	{
		if (mPosition == mMade && mPosition < FindEnd())
		{
			Fill();
		}
		std::int64_t const count = std::min({inFrames - done, mMade - mPosition, FindEnd() - mPosition});
		if (count <= 0)
		{
			break;
		}
		std::int64_t const first = mOutput.GetUseSize() - (mMade - mPosition);
		for (unsigned channel = 0; channel < mNumChannels; ++channel)
		{
			float const* const samples = mOutput.GetChannel(channel) + first;
			for (std::int64_t i = 0; i < count; ++i)
			{
				outSamples[(done + i) * mNumChannels + channel] = samples[i];
			}
		}
		mPosition += count;
		done += count;
	}
	return done;
}

void RampStretchDecoder::Start()
{
	Stretch const& stretch = *mRecording.mStretch;
	mFile = std::make_unique<ConvertedFile>(
		std::move(mDecoder), mRecording.mFileFrames, stretch.mStart, stretch.mPitch);
	double const pitch = stretch.mPitch.ToDouble();
	OmegaStretcher::Limits const limits{
		static_cast<float>(pitch / (Stretch::kHighestSpeed * pitch * kSteeringRoom)),
		static_cast<float>(pitch / (Stretch::kLowestSpeed * pitch) * kSteeringRoom), kRampBlockFrames};
	mStretcher = std::make_unique<OmegaStretcher>(stretch.mEngine == StretchEngine::kRubberBand
													  ? OmegaEngineKind::kRubberBand
													  : OmegaEngineKind::kSplice,
		limits, mNumChannels, mRecording.mSampleRate);
	mInput.Init(mNumChannels, mStretcher->GetLargestInput());
	mOutput.Init(mNumChannels, mStretcher->GetLargestOutput());
}

void RampStretchDecoder::Fill()
{
	unsigned const count = mStretcher->GetOutput();
	double const way = GetPassed(mMade + count) - mPassed;
	double const ratio = mStretcher->SetRatio(count / std::max(way, 1.0e-3));
	mInput.SetUseSize(mStretcher->GetInputNeeded());
	mFile->Read(mInput);
	mStretcher->Process(mInput, mOutput);
	mOutput.SetUseSize(count);
	mPassed += count / ratio;
	mMade += count;
}

double RampStretchDecoder::GetPassed(std::int64_t inFrame) const
{
	CurvePositions::Place const place = mPositions.Find(mIsBackwards ? -inFrame : inFrame);
	Ratio const& start = mRecording.mStretch->mStart;
	double const passed = static_cast<double>(place.mWhole - start.Floor()) +
						  std::ldexp(static_cast<double>(place.mFraction), -64) -
						  (start - Ratio(start.Floor())).ToDouble();
	return passed / mRecording.mStretch->mPitch.ToDouble();
}

std::int64_t RampStretchDecoder::FindEnd() const
{
	if (mFile->GetFrames() >= mRecording.mFileFrames)
	{
		return mRecording.mFrames;
	}
	std::int64_t low = 0;
	std::int64_t high = mRecording.mFrames;
	while (low < high)
	{
		std::int64_t const middle = std::midpoint(low, high);
		bool const isBefore = mPositions.Find(mIsBackwards ? -middle : middle).mWhole < mFile->GetFrames();
		(isBefore ? low : high) = isBefore ? middle + 1 : middle;
	}
	return low;
}

} // namespace SonaroHost
