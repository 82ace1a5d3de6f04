#include "RenderJob.h"

#include "Effect/LatencyGrowth.h"
#include "Piece/PieceLength.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/TimePosition.h"
#include "TailSearch.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <chrono>
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
	return zorvcore::math::Exp10(inDecibels / 20.0);
}

// Makes every zero a positive one. A fader that is closed gives silence for a whole block of it, and the samples'
// signs with it for a part: so blocks of any size are alike.
void DropSignsOfZeros(dsp::AudioBuffer& ioBlock)
{
	for (unsigned channel = 0; channel < ioBlock.GetNumChannels(); ++channel)
	{
		float* const samples = ioBlock.IsChannelSilent(channel) ? nullptr : ioBlock.GetChannel(channel);
		for (unsigned i = 0; samples && i < ioBlock.GetUseSize(); ++i)
		{
			samples[i] += 0.0f;
		}
	}
}

} // namespace

std::optional<RenderSummary> RenderFiles(Programme const& inProgramme, RenderPlan const& inPlan,
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	return RunUntilLatenciesStay(
		[&](bool inSearches)
		{
			Programme programme = inProgramme;
			programme.mSearchesLatency = inSearches;
			return RenderJob(std::move(programme), inPlan, inProgress, inStop).Run();
		});
}

RenderJob::RenderJob(
	Programme inProgramme, RenderPlan inPlan, ProgressCallback inProgress, std::stop_token inStop)
	: mProgramme(std::move(inProgramme)),
	  mPlan(std::move(inPlan)),
	  mReport(std::move(inProgress)),
	  mStop(std::move(inStop))
{
	mSummary.mSampleRate = mProgramme.mSampleRate;
	mSummary.mFormat = mPlan.mFormat;
	mSetup.mSampleRate = mProgramme.mSampleRate;
	mSetup.mLayout = mProgramme.GetLayout();
	mSetup.mFormat = mPlan.mFormat;
	mSetup.mGain = mPlan.mRequest.mGain;
	mSetup.mKeepsSeries = mPlan.mRequest.mKeepsSeries;
	mSetup.mReplaces = mPlan.mRequest.mReplace;
	if (mPlan.mRequest.mLevels.mLimitDecibels)
	{
		mSetup.mLimit = ToAmplitude(*mPlan.mRequest.mLevels.mLimitDecibels);
	}
}

std::optional<RenderSummary> RenderJob::Run()
{
	auto const begin = std::chrono::steady_clock::now();
	if (!RunPasses())
	{
		return std::nullopt;
	}
	mSummary.mDamaged = mProgramme.mMedia->ListDamaged();
	mSummary.mLearnedNoise = mProgramme.mMedia->ListLearnedNoise();
	mSummary.mElapsedSeconds =
		std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
	return std::move(mSummary);
}

bool RenderJob::AddTail()
{
	auto const& tail = mPlan.mRequest.mTail;
	if (!tail)
	{
		return true;
	}
	auto const getEnd = [](ProgrammeRange const& inRange) { return inRange.mFirstFrame + inRange.mFrames; };
	ProgrammeRange& mix = mPlan.mMix.mRange;
	std::int64_t const end = getEnd(mix);
	CheckTail(mProgramme, mix);
	auto const frames = tail->mLength ? std::optional(tail->mLength->ToSamples(mProgramme.mSampleRate))
									  : FindTail(mProgramme, MakeRange(mix));
	for (PlannedFile& planned : mPlan.mFiles)
	{
		ProgrammeRange& range = planned.mFile.mRange;
		range.mFrames += getEnd(range) == end ? frames.value_or(0) : 0;
	}
	mix.mFrames += frames.value_or(0);
	return frames.has_value();
}

bool RenderJob::RunPasses()
{
	if (!LearnNoise() || !AddTail())
	{
		return false;
	}
	mProgress.mFramesTotal += NeedsMixAlone() ? mPlan.mMix.mRange.mFrames : 0;
	for (PlannedFile const& planned : mPlan.mFiles)
	{
		mProgress.mFramesTotal += planned.mFile.mRange.mFrames;
	}
	return (!NeedsMixAlone() || MeasureMix()) &&
		   (!mPlan.mRequest.mLevels.mNormalizeLoudness || Normalize()) && WriteFiles();
}

bool RenderJob::LearnNoise()
{
	std::int64_t const frames = mProgramme.mMedia->CountFramesToLearn();
	mProgress.mFramesTotal = frames;
	for (PlannedFile const& planned : mPlan.mFiles)
	{
		mProgress.mFramesTotal += planned.mFile.mRange.mFrames;
	}
	auto const report = [this](std::int64_t inFrames)
	{
		mProgress.mFramesDone = inFrames;
		if (mReport)
		{
			mReport(mProgress);
		}
	};
	bool const isLearned = mProgramme.mMedia->LearnNoise(report, mStop);
	mProgress = {frames, frames};
	return isLearned;
}

bool RenderJob::NeedsMixAlone() const
{
	return mPlan.mRequest.mLevels.mNormalizeLoudness || mPlan.mFiles.empty() ||
		   (!mPlan.mWritesMix && MeasuresTracks());
}

RenderOutput::Setup RenderJob::MakeMeasuringSetup() const
{
	RenderOutput::Setup setup = mSetup;
	setup.mMeasures = true;
	setup.mWrites = false;
	return setup;
}

bool RenderJob::MeasureMix()
{
	RenderOutput::Setup setup = MakeMeasuringSetup();
	setup.mLimit.reset();
	RenderOutput output(setup, mPlan.mMix);
	if (!Render({output, {}, MeasuresTracks(), setup.mWrites}))
	{
		return false;
	}
	mSummary.mMix = output.GetFile().mLoudness;
	return true;
}

bool RenderJob::Normalize()
{
	if (!mSummary.mMix || !std::isfinite(mSummary.mMix->mIntegrated))
	{
		throw HostError(HostError::Kind::kInput,
			"the output cannot be normalized: it is silent, too short or too quiet for its loudness to be "
			"measured; render it without normalizing");
	}
	double const wanted = *mPlan.mRequest.mLevels.mNormalizeLoudness;
	double decibels = wanted - mSummary.mMix->mIntegrated;
	mSetup.mGain = static_cast<float>(ToAmplitude(decibels));
	for (int pass = 0; mSetup.mLimit && pass < kMostLimitedPasses; ++pass)
	{
		mProgress.mFramesTotal += mPlan.mMix.mRange.mFrames;
		RenderOutput output(MakeMeasuringSetup(), mPlan.mMix);
		if (!Render({output, {}, false, false}))
		{
			return false;
		}
		mSummary.mLoudnessError = output.GetFile().mLoudness->mIntegrated - wanted;
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

bool RenderJob::WriteFiles()
{
	mSetup.mMeasures = mPlan.mRequest.mMeasuring != Measuring::kNothing;
	bool const measuresTracks = mPlan.mWritesMix && MeasuresTracks() && !NeedsMixAlone();
	// A deque does not move what has been opened.
	std::deque<RenderOutput> outputs;
	for (PlannedFile const& planned : mPlan.mFiles)
	{
		RenderOutput& output = outputs.emplace_back(mSetup, planned.mFile);
		if (!Render({output, planned.mOnlyTrack, measuresTracks, true}))
		{
			return false;
		}
	}
	if (mPlan.mWritesMix && !outputs.empty() && !mSummary.mMix && !mSetup.mLimit)
	{
		mSummary.mMix = outputs.front().GetFile().mLoudness;
	}
	for (RenderOutput& output : outputs)
	{
		output.Commit();
		mSummary.mFiles.push_back(output.GetFile());
	}
	return true;
}

TrackMeters RenderJob::MakeMeters(Pass const& inPass) const
{
	// Several groups for each thread, so that all of them find work.
	constexpr std::size_t kGroupsPerJob = 4;
	return {inPass.mMeasuresTracks ? mPlan.mTracks : std::vector<PlannedTrack>(), mProgramme.mSampleRate,
		mPlan.mRequest.mKeepsSeries ? LoudnessMeter::Windows::kSeries : LoudnessMeter::Windows::kNone,
		mPlan.mRequest.mJobs > 1 ? kGroupsPerJob * mPlan.mRequest.mJobs : 1};
}

void RenderJob::TakeBlock(Pass const& inPass, dsp::AudioBuffer& ioBlock)
{
	if (mPlan.mDropsSignsOfZeros)
	{
		DropSignsOfZeros(ioBlock);
	}
	inPass.mOutput.Add(ioBlock);
	mProgress.mFramesDone += ioBlock.GetUseSize();
	if (mReport)
	{
		mReport(mProgress);
	}
}

RangeRender RenderJob::MakeRange(ProgrammeRange const& inRange) const
{
	RangeRender render;
	render.mRange = inRange;
	render.mBlockFrames = mPlan.mRequest.mBlockFrames;
	render.mStop = mStop;
	render.mJobs = mPlan.mRequest.mJobs;
	render.mPieceFrames = PieceLength::GetForTests();
	return render;
}

bool RenderJob::Render(Pass const& inPass)
{
	TrackMeters const meters = MakeMeters(inPass);
	RangeRender render = MakeRange(inPass.mOutput.GetFile().mRange);
	render.mView = MakeView(inPass, meters);
	render.mReadsAhead = mPlan.mReadsAhead && inPass.mWrites;
	render.mTapGroups = meters.GetGroups();
	render.mSink = [&](dsp::AudioBuffer& ioBlock) { TakeBlock(inPass, ioBlock); };
	auto report = RenderRange(mProgramme, render);
	if (!report)
	{
		return false;
	}
	inPass.mOutput.Complete();
	if (inPass.mMeasuresTracks)
	{
		mSummary.mTracks = meters.GetReadings();
	}
	TakeReport(inPass, std::move(report->mGraph));
	if (report->mReadAhead)
	{
		mSummary.mPlayback.emplace().mReadAhead = *report->mReadAhead;
	}
	return true;
}

// Of stems, what is said of the mix is put together from all.
void RenderJob::TakeReport(Pass const& inPass, Sequence::GraphReport inReport)
{
	if (inPass.mOnlyTrack.empty())
	{
		mSummary.mGraph = std::move(inReport);
		return;
	}
	if (mSummary.mGraph.mWhyInOneRun.empty())
	{
		mSummary.mGraph.mWhyInOneRun = inReport.mWhyInOneRun;
	}
	auto& effects = mSummary.mGraph.mEffects;
	for (auto const& effect : inReport.mEffects)
	{
		auto const isSame = [&effect](auto const& inOther)
		{ return inOther->mPlace == effect->mPlace && inOther->mFacts == effect->mFacts; };
		if (std::ranges::none_of(effects, isSame))
		{
			effects.push_back(effect);
		}
	}
}

Sequence::GraphView RenderJob::MakeView(Pass const& inPass, TrackMeters const& inMeters) const
{
	Sequence::GraphView view;
	view.mTaps = inMeters.GetTaps();
	if (!inPass.mOnlyTrack.empty())
	{
		view.mLeftOut = {mPlan.mOutermostTracks.begin(), mPlan.mOutermostTracks.end()};
		view.mLeftOut.erase(inPass.mOnlyTrack);
	}
	return view;
}

} // namespace SonaroHost
