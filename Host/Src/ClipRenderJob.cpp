#include "SonaroHost/ClipRenderJob.h"

#include "ClipTrack.h"
#include "JobChecks.h"
#include "RemappedGenerator.h"
#include "Sonaro/SonaroFactory.h"
#include "SonaroHost/AudioFileWriter.h"
#include "SonaroHost/ChannelLayouts.h"
#include "SonaroHost/HostError.h"
#include "SonaroHost/LayoutConversion.h"
#include "SonaroHost/RenderContextScope.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>
#include <numeric>
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

// The larger of inPeak and the largest magnitude in the block; what is not a number is passed over.
float FindPeak(dsp::AudioBuffer const& inBlock, float inPeak)
{
	float peak = inPeak;
	for (unsigned channel = 0; channel < inBlock.GetNumChannels(); ++channel)
	{
		if (inBlock.IsChannelSilent(channel))
		{
			continue;
		}
		float const* const samples = inBlock.GetChannel(channel);
		for (unsigned i = 0; i < inBlock.GetUseSize(); ++i)
		{
			float const magnitude = std::fabs(samples[i]);
			peak = magnitude > peak ? magnitude : peak;
		}
	}
	return peak;
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

SN::TickTime GetFirstBlockTime(OfflineRange const& inRange)
{
	bool const isReverse = inRange.mDirection == RenderDirection::eReverse;
	std::int64_t const lastBlock = std::max<std::int64_t>(0, inRange.mFrames - inRange.mBlockFrames);
	return {isReverse ? lastBlock : 0, inRange.mFrameRate};
}

} // namespace

ClipRenderJob::ClipRenderJob(ClipRenderRequest inRequest)
	: mRequest(std::move(inRequest)),
	  mSource(AudioFileSource::Open(mRequest.mInput))
{
	if (mRequest.mBlockFrames < 1 || mRequest.mBlockFrames > kMaxBlockFrames)
	{
		Refuse("a block has 1 to " + std::to_string(kMaxBlockFrames) + " samples, not " +
			   std::to_string(mRequest.mBlockFrames));
	}
	CheckOutput(mRequest.mInput, mRequest.mOutput, mRequest.mReplace);
	FrameRange const range = ChooseRange(GetInputInfo(), mRequest.mStart, mRequest.mDuration);
	mFirstFrame = range.mFirst;
	mFrames = range.mFrames;
	mPlan = LayoutPlan(ChooseChannels(), mRequest.mLayout);
	ChooseLength();
	ChooseFades();
	ChooseFormat();
}

std::optional<RenderSummary> ClipRenderJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	auto const begin = std::chrono::steady_clock::now();
	OfflineRange const range = MakeRange();
	SN::TickTime const rangeEnd(mOutputFrames, range.mFrameRate);
	// It does not tell that it runs backwards, as a render without one cannot: told so, a panner would take
	// the first block for the next one of a playback and fade into it.
	SN::Prefetcher prefetcher{.mStart = SN::kTimeZero, .mEnd = rangeEnd};
	RenderContextScope const context(
		range.mBlockFrames, rangeEnd, mSource->GetName(), mRequest.mAsPlayback ? &prefetcher : nullptr);
	auto const graph = MakeGraph(context.Get());
	LayoutConversion conversion(mPlan, context.Get(), range.mFrameRate);
	AudioFileWriter writer(mRequest.mOutput, mFormat, GetSampleRate(), GetOutputLayout(), mOutputFrames);
	std::optional<ReadAhead> readAhead;
	if (mRequest.mAsPlayback)
	{
		readAhead.emplace(graph, range).Advance(0);
	}

	std::optional<LoudnessMeter> loudness;
	if (mRequest.mMeasureLoudness && LoudnessMeter::CanMeasure(GetOutputLayout(), GetSampleRate()))
	{
		loudness.emplace(GetOutputLayout(), GetSampleRate(), LoudnessMeter::Memory::eGrowing);
	}

	RenderSummary summary = DescribeOutput();
	auto const sink = [&](dsp::AudioBuffer& ioBlock, SN::TickTime const& inTime)
	{
		CheckSource();
		if (NeedsTrack())
		{
			DropSignsOfZeros(ioBlock);
		}
		dsp::AudioBuffer const& output = conversion.Convert(ioBlock, inTime);
		writer.Write(output);
		summary.mPeak = FindPeak(output, summary.mPeak);
		if (loudness)
		{
			loudness->Add(output);
		}
		if (inProgress)
		{
			inProgress({writer.GetFrames(), mOutputFrames});
		}
		if (readAhead && !inStop.stop_requested())
		{
			readAhead->Advance(writer.GetFrames());
		}
	};
	conversion.Preroll(GetFirstBlockTime(range), range.mDirection == RenderDirection::eReverse);
	if (!RenderOffline(graph, range, sink, inStop) || inStop.stop_requested())
	{
		return std::nullopt;
	}
	writer.Finish();

	if (readAhead)
	{
		summary.mPlayback = {readAhead->GetReport(), mSource->GetMissCount(), mSource->GetMissedFrames()};
	}
	if (loudness)
	{
		summary.mLoudness = loudness->GetReading();
	}
	summary.mClippedSamples = writer.GetClippedSamples();
	summary.mElapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
	return summary;
}

void ClipRenderJob::CheckSource() const
{
	if (auto const failure = mSource->GetFailure())
	{
		throw HostError(HostError::Kind::eInput, *failure);
	}
}

OfflineRange ClipRenderJob::MakeRange() const
{
	OfflineRange range{mOutputFrames, SN::FrameRate::FromSamplesPerSecond(GetSampleRate()),
		static_cast<unsigned>(mPlan.GetInputLayout().size()), mRequest.mBlockFrames, mRequest.mDirection};
	if (NeedsTrack())
	{
		// A track runs forward: what lies on it is reversed.
		range.mDirection = RenderDirection::eForward;
		range.mBlockFrames = ChooseTrackBlock(mRequest.mBlockFrames, GetReadingSpeed());
	}
	return range;
}

RenderSummary ClipRenderJob::DescribeOutput() const
{
	RenderSummary summary;
	summary.mFrames = mOutputFrames;
	summary.mChannels = static_cast<unsigned>(GetOutputLayout().size());
	summary.mSampleRate = GetSampleRate();
	summary.mFormat = mFormat;
	return summary;
}

SN::AudioChannelLayout ClipRenderJob::ChooseChannels()
{
	AudioFileInfo const& info = GetInputInfo();
	std::vector<unsigned> all(info.GetNumChannels());
	std::iota(all.begin(), all.end(), 0u);
	if (mRequest.mChannels.empty() || mRequest.mChannels == all)
	{
		mRequest.mChannels = all;
		return info.mLayout;
	}
	if (mRequest.mChannels.size() > kMaxChannels)
	{
		Refuse("at most " + std::to_string(kMaxChannels) + " channels can be chosen, not " +
			   std::to_string(mRequest.mChannels.size()));
	}
	for (unsigned const channel : mRequest.mChannels)
	{
		if (channel >= info.GetNumChannels())
		{
			Refuse(QuotePath(info.mPath) + " has " + GetLayoutName(info.mLayout) +
				   " sound; there is no channel " + std::to_string(channel + 1));
		}
	}
	return MakeLayoutOfChannels(static_cast<unsigned>(mRequest.mChannels.size()));
}

double ClipRenderJob::GetReadingSpeed() const
{
	return mRequest.mSpeed * GetInputInfo().mSampleRate / GetSampleRate();
}

void ClipRenderJob::ChooseLength()
{
	// Written so that what is not a number fails it.
	if (!(mRequest.mSpeed >= kLowestSpeed && mRequest.mSpeed <= kHighestSpeed))
	{
		Refuse("a speed goes from 0.01 to 100");
	}
	if (GetSampleRate() != GetInputInfo().mSampleRate &&
		(GetSampleRate() < kLowestSampleRate || GetSampleRate() > kHighestSampleRate))
	{
		Refuse("a sample rate goes from 1000 to 768000 Hz");
	}
	double const speed = GetReadingSpeed();
	if (speed < kLowestSpeed || speed > kHighestSpeed)
	{
		Refuse("from " + std::to_string(GetInputInfo().mSampleRate) + " Hz to " +
			   std::to_string(GetSampleRate()) +
			   " Hz at that speed is too far: give a speed nearer to 1 or a rate nearer to the input's");
	}
	mOutputFrames = std::llround(static_cast<double>(mFrames) / speed);
	if (mOutputFrames < 1)
	{
		Refuse("at that speed the output is less than a sample; there is nothing to render");
	}
}

void ClipRenderJob::ChooseFades()
{
	int const rate = GetSampleRate();
	mFades.mIn = mRequest.mFadeIn ? mRequest.mFadeIn->ToSamples(rate) : 0;
	mFades.mOut = mRequest.mFadeOut ? mRequest.mFadeOut->ToSamples(rate) : 0;
	if (mFades.mIn > mOutputFrames - mFades.mOut)
	{
		Refuse("the fades take longer than the " + FormatTime(mOutputFrames, rate) + " of the output");
	}
}

void ClipRenderJob::ChooseFormat()
{
	mFormat.mContainer = mRequest.mContainer;
	mFormat.mSamples = mRequest.mSamples.value_or(GetDefaultSamples(mRequest.mContainer));
	if (mRequest.mDither == Dither::eTriangular && mFormat.mSamples == OutputSamples::eFloat32)
	{
		Refuse("dither is for 16 and 24 bits; floats are not rounded");
	}
	bool const samplesStay = mRequest.mGain == 1.0f && !NeedsTrack() && mPlan.KeepsSamples();
	mFormat.mDither =
		mRequest.mDither.value_or(ChooseDither(mFormat.mSamples, GetInputInfo().mIntegerBits, samplesStay));
}

SN::InterfaceRef<SN::IAudioGenerator> ClipRenderJob::MakeGraph(
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext)
{
	SN::InterfaceRef<SN::IAudioGenerator> clip = MakeClip(inContext);
	if (!NeedsTrack())
	{
		return clip;
	}
	SN::FrameRate const frameRate = MakeRange().mFrameRate;
	clip = zorvcore::classref::MakeObject<RemappedGenerator>(
		clip, FrameMap{mFrames, mSource->GetFrameRate(), frameRate,
				  mRequest.mDirection == RenderDirection::eReverse});
	return MakeClipTrack(
		inContext, clip, {frameRate, mPlan.GetInputLayout(), mOutputFrames, mFades, GetReadingSpeed()});
}

SN::InterfaceRef<SN::IAudioGenerator> ClipRenderJob::MakeClip(
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext)
{
	constexpr int kAllChannels = -1;
	constexpr double kNormalSpeed = 1.0;
	auto const factory = SN::SonaroFactory::CreateClassRef();
	SN::FrameRate const frameRate = mSource->GetFrameRate();

	SN::InterfaceRef<SN::IAudioGenerator> stream;
	CheckEngineResult(factory->CreateAudioStreamRenderer(
						  inContext, frameRate, mSource, kAllChannels, kNormalSpeed, nullptr, &stream),
		"a stream");

	SN::AudioChannelMap channels;
	for (std::size_t i = 0; i < mRequest.mChannels.size(); ++i)
	{
		channels[i] = mRequest.mChannels[i];
	}
	SN::InterfaceRef<SN::IAudioGenerator> clip;
	CheckEngineResult(
		factory->CreateAudioClipRenderer(inContext, frameRate, {{stream, channels}}, mPlan.GetInputLayout(),
			SN::TickTime(mFirstFrame, frameRate), mRequest.mGain, kNormalSpeed, &clip),
		"a clip");
	return clip;
}

} // namespace SonaroHost
