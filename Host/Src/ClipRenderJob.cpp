#include "SonaroHost/ClipRenderJob.h"

#include "ClipTrack.h"
#include "SonaroHost/AudioFileWriter.h"
#include "SonaroHost/BlockPeak.h"
#include "SonaroHost/HostError.h"
#include "SonaroHost/RenderContextScope.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

namespace SonaroHost
{

namespace
{

[[noreturn]] void Refuse(std::string const& inMessage)
{
	throw HostError(HostError::Kind::eRequest, inMessage);
}

// A fader that is closed gives silence for a whole block of it, and the samples' signs with it for a part: so
// that blocks of any size are alike, every zero is a positive one.
void DropSignsOfZeros(dsp::AudioBuffer& ioBlock)
{
	for (unsigned channel = 0; channel < ioBlock.GetNumChannels(); ++channel)
	{
		if (ioBlock.IsChannelSilent(channel))
		{
			continue;
		}
		float* const samples = ioBlock.GetChannel(channel);
		for (unsigned i = 0; i < ioBlock.GetUseSize(); ++i)
		{
			samples[i] += 0.0f;
		}
	}
}

// Where blocks go: into the file, and into what is measured of them.
class Output
{
public:
	Output(ClipRenderRequest const& inRequest, ProgrammePlan const& inPlan, OutputFormat const& inFormat)
		: mWriter(inRequest.mOutput, inFormat, inPlan.GetSampleRate(), inPlan.GetLayout(), inPlan.GetFrames())
	{
		if (inRequest.mMeasureLoudness &&
			LoudnessMeter::CanMeasure(inPlan.GetLayout(), inPlan.GetSampleRate()))
		{
			mLoudness.emplace(inPlan.GetLayout(), inPlan.GetSampleRate(), LoudnessMeter::Memory::eGrowing);
		}
	}

	void Add(dsp::AudioBuffer const& inBlock)
	{
		mWriter.Write(inBlock);
		mPeak = FindPeak(inBlock, mPeak);
		if (mLoudness)
		{
			mLoudness->Add(inBlock);
		}
	}

	std::int64_t GetFrames() const { return mWriter.GetFrames(); }

	// Lets the file appear.
	void Finish(RenderSummary& outSummary)
	{
		mWriter.Finish();
		outSummary.mPeak = mPeak;
		outSummary.mClippedSamples = mWriter.GetClippedSamples();
		if (mLoudness)
		{
			outSummary.mLoudness = mLoudness->GetReading();
		}
	}

private:
	AudioFileWriter mWriter;
	std::optional<LoudnessMeter> mLoudness;
	float mPeak = 0.0f;
};

// Throws a HostError when it is out of range.
ClipRenderRequest CheckBlock(ClipRenderRequest inRequest)
{
	if (inRequest.mBlockFrames < 1 || inRequest.mBlockFrames > kMaxBlockFrames)
	{
		Refuse("a block has 1 to " + std::to_string(kMaxBlockFrames) + " samples, not " +
			   std::to_string(inRequest.mBlockFrames));
	}
	return inRequest;
}

} // namespace

ClipRenderJob::ClipRenderJob(ClipRenderRequest inRequest)
	: mRequest(CheckBlock(std::move(inRequest))),
	  mPlan(mRequest),
	  mFormat(ChooseFormat())
{
}

std::optional<RenderSummary> ClipRenderJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	auto const begin = std::chrono::steady_clock::now();
	OfflineRange const range = MakeRange();
	SN::TickTime const rangeEnd(range.mFrames, range.mFrameRate);
	// It does not tell of a reversed programme: what lies on the track is reversed, and the track runs
	// forward.
	SN::Prefetcher prefetcher{.mStart = SN::kTimeZero, .mEnd = rangeEnd};
	RenderContextScope const context(range.mBlockFrames, rangeEnd,
		SN::ImmutableString(mRequest.mOutput.filename().string().c_str()),
		mRequest.mAsPlayback ? &prefetcher : nullptr);
	auto const graph = MakeClipTrack(context.Get(), mPlan);
	Output output(mRequest, mPlan, mFormat);
	std::optional<ReadAhead> readAhead;
	if (mRequest.mAsPlayback)
	{
		readAhead.emplace(graph, range).Advance(0);
	}
	bool const dropsSigns = mPlan.IsResampled() || !mPlan.GetFades().IsNone();
	auto const sink = [&](dsp::AudioBuffer& ioBlock, SN::TickTime const&)
	{
		CheckSources();
		if (dropsSigns)
		{
			DropSignsOfZeros(ioBlock);
		}
		output.Add(ioBlock);
		if (inProgress)
		{
			inProgress({output.GetFrames(), GetFrames()});
		}
		if (readAhead && !inStop.stop_requested())
		{
			readAhead->Advance(output.GetFrames());
		}
	};
	if (!RenderOffline(graph, range, sink, inStop) || inStop.stop_requested())
	{
		return std::nullopt;
	}
	RenderSummary summary = DescribeOutput();
	output.Finish(summary);
	if (readAhead)
	{
		summary.mPlayback = DescribePlayback(*readAhead);
	}
	summary.mElapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
	return summary;
}

void ClipRenderJob::CheckSources() const
{
	for (PlannedClip const& clip : mPlan.GetClips())
	{
		if (auto const failure = clip.mSource->GetFailure())
		{
			throw HostError(HostError::Kind::eInput, *failure);
		}
	}
}

OfflineRange ClipRenderJob::MakeRange() const
{
	return {GetFrames(), mPlan.GetFrameRate(), static_cast<unsigned>(GetOutputLayout().size()),
		ChooseTrackBlock(mRequest.mBlockFrames, mPlan)};
}

RenderSummary ClipRenderJob::DescribeOutput() const
{
	RenderSummary summary;
	summary.mFrames = GetFrames();
	summary.mChannels = static_cast<unsigned>(GetOutputLayout().size());
	summary.mSampleRate = GetSampleRate();
	summary.mFormat = mFormat;
	return summary;
}

PlaybackSummary ClipRenderJob::DescribePlayback(ReadAhead& ioReadAhead) const
{
	PlaybackSummary summary;
	summary.mReadAhead = ioReadAhead.GetReport();
	for (PlannedClip const& clip : mPlan.GetClips())
	{
		summary.mMisses += clip.mSource->GetMissCount();
		summary.mMissedFrames += clip.mSource->GetMissedFrames();
		summary.mMissedFramesOfInputs.push_back(clip.mSource->GetMissedFrames());
	}
	return summary;
}

OutputFormat ClipRenderJob::ChooseFormat() const
{
	OutputFormat format;
	format.mContainer = mRequest.mContainer;
	format.mSamples = mRequest.mSamples.value_or(GetDefaultSamples(mRequest.mContainer));
	if (mRequest.mDither == Dither::eTriangular && format.mSamples == OutputSamples::eFloat32)
	{
		Refuse("dither is for 16 and 24 bits; floats are not rounded");
	}
	bool const needsDither = std::any_of(mPlan.GetClips().begin(), mPlan.GetClips().end(),
		[&](PlannedClip const& inClip)
		{
			return ChooseDither(format.mSamples, inClip.GetInfo().mIntegerBits, mPlan.KeepsSamples()) ==
				   Dither::eTriangular;
		});
	format.mDither = mRequest.mDither.value_or(needsDither ? Dither::eTriangular : Dither::eNone);
	return format;
}

} // namespace SonaroHost
