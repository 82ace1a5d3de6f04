#include "RenderPasses.h"

#include "SonaroHost/HostError.h"
#include "TrackMeters.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cmath>
#include <deque>
#include <utility>

namespace SonaroHost::Otio
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

RenderPasses::RenderPasses(TimelineRenderRequest const& inRequest, TimelineInput& ioInput,
	TimelineOptions inOptions, ProgrammeRange const& inRange, OutputFormat const& inFormat, Caller inCaller)
	: mRequest(inRequest),
	  mInput(ioInput),
	  mOptions(std::move(inOptions)),
	  mRange(inRange),
	  mCaller(std::move(inCaller))
{
	mSummary.mFormat = inFormat;
	mSetup.mSampleRate = *mOptions.mSampleRate;
	mSetup.mLayout = *mOptions.mLayout;
	mSetup.mFormat = inFormat;
	if (mRequest.mLimitDecibels)
	{
		mSetup.mLimit = ToAmplitude(*mRequest.mLimitDecibels);
	}
}

std::optional<TimelineRenderSummary> RenderPasses::Run(std::vector<RenderedFile> const& inFiles)
{
	mProgress.mFramesTotal = NeedsMixAlone() ? mRange.mFrames : 0;
	for (RenderedFile const& file : inFiles)
	{
		mProgress.mFramesTotal += file.mRange.mFrames;
	}
	if ((NeedsMixAlone() && !MeasureMix()) || (mRequest.mNormalizeLoudness && !Normalize()))
	{
		return std::nullopt;
	}
	if (!WriteFiles(inFiles))
	{
		return std::nullopt;
	}
	return std::move(mSummary);
}

bool RenderPasses::NeedsMixAlone() const
{
	return mRequest.mNormalizeLoudness || (mRequest.mStems != Stems::eNone && MeasuresTracks());
}

RenderedFile RenderPasses::DescribeMix() const
{
	RenderedFile file;
	file.mRange = mRange;
	return file;
}

bool RenderPasses::MeasureMix()
{
	TimelineOutput::Setup setup = mSetup;
	setup.mLimit.reset();
	setup.mMeasures = true;
	setup.mWrites = false;
	TimelineOutput output(setup, DescribeMix());
	if (!Render(output, Tracks::eMeasured))
	{
		return false;
	}
	mSummary.mMix = output.GetFile().mLoudness;
	return true;
}

bool RenderPasses::Normalize()
{
	if (!mSummary.mMix || !std::isfinite(mSummary.mMix->mIntegrated))
	{
		throw HostError(HostError::Kind::eInput, "the mix cannot be normalized: it is silent, or too short "
												 "or too soft for its loudness to be measured");
	}
	double decibels = *mRequest.mNormalizeLoudness - mSummary.mMix->mIntegrated;
	mSetup.mGain = static_cast<float>(ToAmplitude(decibels));
	for (int pass = 0; mSetup.mLimit && pass < kMostLimitedPasses; ++pass)
	{
		TimelineOutput::Setup setup = mSetup;
		setup.mMeasures = true;
		setup.mWrites = false;
		mProgress.mFramesTotal += mRange.mFrames;
		TimelineOutput output(setup, DescribeMix());
		if (!Render(output, Tracks::eUnheard))
		{
			return false;
		}
		mSummary.mLoudnessError = output.GetFile().mLoudness->mIntegrated - *mRequest.mNormalizeLoudness;
		// The limiter was not needed, or little enough.
		if (!(std::fabs(mSummary.mLoudnessError) > kLoudnessTolerance) || pass + 1 == kMostLimitedPasses)
		{
			break;
		}
		decibels -= mSummary.mLoudnessError;
		mSetup.mGain = static_cast<float>(ToAmplitude(decibels));
	}
	mSummary.mNormalizingGain = static_cast<double>(mSetup.mGain);
	return true;
}

bool RenderPasses::WriteFiles(std::vector<RenderedFile> const& inFiles)
{
	mSetup.mMeasures = mRequest.mMeasuring != Measuring::eNothing;
	bool const isMix = mRequest.mStems == Stems::eNone;
	// Without moving what has been opened.
	std::deque<TimelineOutput> outputs;
	for (RenderedFile const& file : inFiles)
	{
		mOptions.mOnlyChild = file.mOnlyChild;
		TimelineOutput& output = outputs.emplace_back(mSetup, file);
		if (!Render(
				output, isMix && MeasuresTracks() && !NeedsMixAlone() ? Tracks::eMeasured : Tracks::eUnheard))
		{
			return false;
		}
	}
	if (isMix && !mSummary.mMix && !mSetup.mLimit)
	{
		mSummary.mMix = outputs.front().GetFile().mLoudness;
	}
	for (TimelineOutput& output : outputs)
	{
		output.Commit();
		mSummary.mFiles.push_back(output.GetFile());
	}
	return true;
}

bool RenderPasses::Render(TimelineOutput& ioOutput, Tracks inTracks)
{
	TimelineOptions options = mOptions;
	TrackMeters meters;
	bool const isMeasured = inTracks == Tracks::eMeasured && MeasuresTracks();
	if (isMeasured)
	{
		options.mMakeMeter = [&meters](TrackRow const& inRow) { return meters.Make(inRow); };
	}
	TimelineSequence const sequence = mInput.MakeSequence(options);
	TimelinePass pass;
	pass.mRange = ioOutput.GetFile().mRange;
	pass.mBlockFrames = mRequest.mBlockFrames;
	pass.mBegin = [&] { meters.Begin(SN::FrameRate::FromSamplesPerSecond(sequence.mSampleRate)); };
	pass.mSink = [&](dsp::AudioBuffer& ioBlock)
	{
		ioOutput.Add(ioBlock);
		mProgress.mFramesDone += ioBlock.GetUseSize();
		if (mCaller.mProgress)
		{
			mCaller.mProgress(mProgress);
		}
	};
	auto report = RunPass(sequence, mInput.GetMedia(), pass, mCaller.mStop);
	if (!report)
	{
		return false;
	}
	ioOutput.Complete();
	if (isMeasured)
	{
		mSummary.mTracks = meters.GetReadings(sequence.mTracks);
	}
	if (!options.mOnlyChild)
	{
		mSummary.mGraph = std::move(*report);
	}
	return true;
}

} // namespace SonaroHost::Otio
