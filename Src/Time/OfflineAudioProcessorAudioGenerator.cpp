#include "Time/OfflineAudioProcessorAudioGenerator.h"

#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioSubBuffer.h"
#include "zorvaudiodsp/ZeroBufferAccordingToSilenceFlags.h"

#include <algorithm>
#include <chrono>

namespace SN
{

namespace
{

// The source's chain is prepared for blocks of this length.
constexpr unsigned kMaxPiece = 2048;
constexpr std::chrono::nanoseconds kLongestWait{86400000000000};

// Aims outWindow at inFrames samples of ioBuffer from inOffset on.
void Aim(dsp::AudioSubBuffer& outWindow, dsp::AudioBuffer& ioBuffer, unsigned inOffset, unsigned inFrames)
{
	outWindow.Init(ioBuffer.GetNumChannels());
	outWindow.Assign(ioBuffer, inOffset);
	outWindow.SetUseSize(inFrames);
}

void Pan(IAudioPanProcessor& ioPanner, dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
	TickTime const& inTime)
{
	if (ioPanner.DoesNotAlterAudio())
	{
		outOutput.CopyFrom(inInput);
	}
	else
	{
		ioPanner.ProcessAudioData(inInput, outOutput, inTime);
	}
}

// What a process reads its source through.
struct SourceReader
{
	InterfaceRef<IAudioGenerator> mGenerator;
	InterfaceRef<IAudioPanProcessor> mPanner;
	FrameRate mFrameRate;

	// The first channel of the panner's output.
	void operator()(float** ioChannels, long long inStart, int inCount) const
	{
		if (inCount < 1)
		{
			return;
		}
		auto const count = static_cast<unsigned>(inCount);
		dsp::AudioBuffer source(mPanner->GetNumInputChannels(), count);
		Pull(source, inStart);
		dsp::AudioBuffer panned(mPanner->GetNumOutputChannels(), count);
		Pan(*mPanner, source, panned, TickTime(inStart, mFrameRate));
		dsp::ZeroBufferAccordingToSilenceFlags(panned);
		zorvaccelerate::utility::Copy(count, panned.GetChannel(0), ioChannels[0]);
	}

private:
	void Pull(dsp::AudioBuffer& outSource, long long inStart) const
	{
		for (unsigned position = 0; position < outSource.GetUseSize(); position += kMaxPiece)
		{
			dsp::AudioSubBuffer piece;
			Aim(piece, outSource, position, kMaxPiece);
			mGenerator->GetAudioData(TickTime(inStart + position, mFrameRate), piece, false);
			dsp::ZeroBufferAccordingToSilenceFlags(piece);
		}
	}
};

} // namespace

int OfflineAudioProcessorAudioGenerator::Create(
	OfflineAudioProcessorSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator)
{
	*outGenerator = zorvcore::classref::MakeObject<OfflineAudioProcessorAudioGenerator>(inSettings);
	return kSuccess;
}

OfflineAudioProcessorAudioGenerator::OfflineAudioProcessorAudioGenerator(
	OfflineAudioProcessorSettings const& inSettings)
	: mSettings(inSettings)
{
}

void OfflineAudioProcessorAudioGenerator::Preroll(TickTime const& inStartTime, bool inReverse)
{
	mSettings.mGenerator->Preroll(inStartTime, inReverse);
	mStream = mSettings.mProcessor->CreateProcessedStream(
		SourceReader{mSettings.mGenerator, mSettings.mInputPanner, mSettings.mFrameRate}, 0,
		mSettings.mEndTime - mSettings.mStartTime);
	mCurrentChunk.reset();
	mChunkStartTime = mChunkEndTime = kTimeZero;
}

void OfflineAudioProcessorAudioGenerator::FetchNextChunk()
{
	mCurrentChunk.reset();
	// A stream that has failed once is not asked again.
	if (mStream && mChunkEndTime != kTime_Invalid)
	{
		auto const next = mStream->GetNextBuffer();
		zorvcore::async::WaitForUntypedUntil(next, std::chrono::steady_clock::now() + kLongestWait);
		if (ResultSucceeded(zorvcore::config::ExtractResultFromException(next.GetException())))
		{
			mCurrentChunk = next.Get();
		}
	}
	if (!mCurrentChunk)
	{
		mChunkStartTime = mChunkEndTime = kTime_Invalid;
		return;
	}
	mChunkStartTime = mChunkEndTime;
	mChunkEndTime.AddFrames(mCurrentChunk->GetUseSize(), mSettings.mFrameRate);
}

bool OfflineAudioProcessorAudioGenerator::ReachChunk(TickTime const& inTime)
{
	while (!mCurrentChunk || inTime >= mChunkEndTime)
	{
		FetchNextChunk();
		if (!mCurrentChunk)
		{
			return false;
		}
	}
	return true;
}

unsigned OfflineAudioProcessorAudioGenerator::TakeFromChunk(TickTime const& inTime, dsp::AudioBuffer& ioRest)
{
	long long const offset = (inTime - mChunkStartTime).ToFrame64(mSettings.mFrameRate);
	unsigned const wanted = ioRest.GetUseSize();
	dsp::AudioSubBuffer out;
	if (offset < 0)
	{
		// Before the chunk, where nobody can go back.
		auto const missing = static_cast<unsigned>(std::min<long long>(wanted, -offset));
		Aim(out, ioRest, 0, missing);
		out.Zero();
		return missing;
	}
	dsp::AudioSubBuffer chunk;
	Aim(chunk, *mCurrentChunk, static_cast<unsigned>(offset), wanted);
	Aim(out, ioRest, 0, chunk.GetUseSize());
	Pan(*mSettings.mOutputPanner, chunk, out, inTime);
	return chunk.GetUseSize();
}

void OfflineAudioProcessorAudioGenerator::GetAudioData(
	TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool)
{
	TickTime time = inTime;
	dsp::AudioSubBuffer rest;
	Aim(rest, inBuffer, 0, inBuffer.GetUseSize());
	while (rest.GetUseSize() > 0)
	{
		if (!ReachChunk(time))
		{
			rest.Zero();
			break;
		}
		unsigned const taken = TakeFromChunk(time, rest);
		rest.ShiftOffset(taken);
		time.AddFrames(taken, mSettings.mFrameRate);
	}
	dsp::ZeroBufferAccordingToSilenceFlags(inBuffer);
	inBuffer.ClearSilenceFlags(dsp::SilenceFlags::All());
}

void OfflineAudioProcessorAudioGenerator::InitializeAudioFilters()
{
	if (mSettings.mGenerator)
	{
		mSettings.mGenerator->InitializeAudioFilters();
	}
}

void OfflineAudioProcessorAudioGenerator::ShutdownAudioFilters()
{
	if (mSettings.mGenerator)
	{
		mSettings.mGenerator->ShutdownAudioFilters();
	}
}

} // namespace SN
