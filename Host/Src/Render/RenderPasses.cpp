#include "RenderPasses.h"

#include "SonaroHost/Base/HostError.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cmath>
#include <deque>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr double kLoudnessTolerance = 0.02;
constexpr int kMostLimitedPasses = 6;

double ToAmplitude(double inDecibels)
{
	return std::pow(10.0, inDecibels / 20.0);
}

} // namespace

RenderPasses::RenderPasses(RenderPlan inPlan, Renderer inRenderer, ProgressCallback inProgress)
	: mPlan(std::move(inPlan)),
	  mRenderer(std::move(inRenderer)),
	  mReport(std::move(inProgress))
{
	mResult.mFormat = mPlan.mFormat;
	mSetup.mSampleRate = mPlan.mSampleRate;
	mSetup.mLayout = mPlan.mLayout;
	mSetup.mFormat = mPlan.mFormat;
	mSetup.mGain = mPlan.mGain;
	if (mPlan.mLevels.mLimitDecibels)
	{
		mSetup.mLimit = ToAmplitude(*mPlan.mLevels.mLimitDecibels);
	}
}

std::optional<RenderedFiles> RenderPasses::Run()
{
	mProgress.mFramesTotal = NeedsMixAlone() ? mPlan.mMix.mRange.mFrames : 0;
	for (RenderedFile const& file : mPlan.mFiles)
	{
		mProgress.mFramesTotal += file.mRange.mFrames;
	}
	if ((NeedsMixAlone() && !MeasureMix()) || (mPlan.mLevels.mNormalizeLoudness && !Normalize()) ||
		!WriteFiles())
	{
		return std::nullopt;
	}
	return std::move(mResult);
}

bool RenderPasses::NeedsMixAlone() const
{
	return mPlan.mLevels.mNormalizeLoudness || (!mPlan.mWritesMix && MeasuresTracks());
}

RenderOutput::Setup RenderPasses::MakeMeasuringSetup() const
{
	RenderOutput::Setup setup = mSetup;
	setup.mMeasures = true;
	setup.mWrites = false;
	return setup;
}

bool RenderPasses::MeasureMix()
{
	RenderOutput::Setup setup = MakeMeasuringSetup();
	setup.mLimit.reset();
	RenderOutput output(setup, mPlan.mMix);
	if (!Render(output, {mPlan.mMix, MeasuresTracks(), setup.mWrites}))
	{
		return false;
	}
	mResult.mMix = output.GetFile().mLoudness;
	return true;
}

bool RenderPasses::Normalize()
{
	if (!mResult.mMix || !std::isfinite(mResult.mMix->mIntegrated))
	{
		throw HostError(HostError::Kind::eInput,
			"the programme cannot be normalized: it is silent, or too short "
			"or too soft for its loudness to be measured");
	}
	double const wanted = *mPlan.mLevels.mNormalizeLoudness;
	double decibels = wanted - mResult.mMix->mIntegrated;
	mSetup.mGain = static_cast<float>(ToAmplitude(decibels));
	for (int pass = 0; mSetup.mLimit && pass < kMostLimitedPasses; ++pass)
	{
		mProgress.mFramesTotal += mPlan.mMix.mRange.mFrames;
		RenderOutput output(MakeMeasuringSetup(), mPlan.mMix);
		if (!Render(output, {mPlan.mMix, false, false}))
		{
			return false;
		}
		mResult.mLoudnessError = output.GetFile().mLoudness->mIntegrated - wanted;
		// The limiter was not needed, or little enough.
		if (!(std::fabs(mResult.mLoudnessError) > kLoudnessTolerance) || pass + 1 == kMostLimitedPasses)
		{
			break;
		}
		decibels -= mResult.mLoudnessError;
		mSetup.mGain = static_cast<float>(ToAmplitude(decibels));
	}
	mResult.mNormalizingGain = static_cast<double>(mSetup.mGain);
	return true;
}

bool RenderPasses::WriteFiles()
{
	mSetup.mMeasures = mPlan.mMeasuring != Measuring::eNothing;
	bool const measuresTracks = mPlan.mWritesMix && MeasuresTracks() && !NeedsMixAlone();
	// A deque does not move what has been opened.
	std::deque<RenderOutput> outputs;
	for (RenderedFile const& file : mPlan.mFiles)
	{
		if (!Render(outputs.emplace_back(mSetup, file), {file, measuresTracks, true}))
		{
			return false;
		}
	}
	if (mPlan.mWritesMix && !mResult.mMix && !mSetup.mLimit)
	{
		mResult.mMix = outputs.front().GetFile().mLoudness;
	}
	for (RenderOutput& output : outputs)
	{
		output.Commit();
		mResult.mFiles.push_back(output.GetFile());
	}
	return true;
}

bool RenderPasses::Render(RenderOutput& ioOutput, RenderPass const& inPass)
{
	auto const sink = [&](dsp::AudioBuffer& ioBlock)
	{
		ioOutput.Add(ioBlock);
		mProgress.mFramesDone += ioBlock.GetUseSize();
		if (mReport)
		{
			mReport(mProgress);
		}
	};
	if (!mRenderer(inPass, sink))
	{
		return false;
	}
	ioOutput.Complete();
	return true;
}

} // namespace SonaroHost
