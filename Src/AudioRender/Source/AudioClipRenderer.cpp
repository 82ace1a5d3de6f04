#include "AudioRender/Source/AudioClipRenderer.h"

#include "AudioRender/Core/FillUp.h"
#include "AudioRender/Core/StackAudioBufferTags.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioBufferChannel.h"

#include <algorithm>

namespace SN
{

namespace
{

// What the start offset is multiplied by; 1.0 for none.
double OffsetFactor(double inSpeed, FrameRate const& inSourceRate, FrameRate const& inFrameRate)
{
	if (inSpeed != 1.0)
	{
		return inSpeed;
	}
	if (inSourceRate == inFrameRate)
	{
		return 1.0;
	}
	return inSourceRate.GetSamplesPerSecond() / inFrameRate.GetSamplesPerSecond();
}

// Copies channels of ioScratch into ioBuffer as the map says.
void CopyChannels(dsp::AudioBuffer& ioScratch, AudioChannelMap const& inChannels, dsp::AudioBuffer& ioBuffer)
{
	for (auto const& [outChannel, sourceChannel] : inChannels)
	{
		if (outChannel >= ioBuffer.GetNumChannels())
		{
			continue;
		}
		if (ioScratch.GetUseSize() < ioBuffer.GetUseSize())
		{
			// A block beyond the context's largest: what the scratch cannot hold is silence.
			ioBuffer.MarkChannelSilent(outChannel);
		}
		dsp::AudioBufferChannel source;
		source.Assign(ioScratch, sourceChannel);
		dsp::AudioBufferChannel out;
		out.Assign(ioBuffer, outChannel);
		out.CopyFrom(source);
	}
}

// What the generator does not write of the request is silent.
void RunGenerator(
	IAudioGenerator& ioGenerator, TickTime const& inTime, bool inReverse, dsp::AudioBuffer& ioBuffer)
{
	unsigned const frames = ioBuffer.GetUseSize();
	ioBuffer.Zero();
	ioGenerator.GetAudioData(inTime, ioBuffer, inReverse);
	FillUp(ioBuffer, frames);
}

} // namespace

template <class Function>
void AudioClipRenderer::ForEachGenerator(Function const& inFunction)
{
	for (Input const& input : mInputs)
	{
		if (input.mGenerator)
		{
			inFunction(*input.mGenerator);
		}
	}
}

int AudioClipRenderer::InitFrom(AudioClipSettings const& inSettings)
{
	int const result = Init(inSettings.mContext, inSettings.mFrameRate);
	for (auto const& [generator, channels] : inSettings.mGenerators)
	{
		mInputs.push_back({generator, channels});
	}
	mChannelLayout = inSettings.mChannelLayout;
	mStartOffset = inSettings.mStartOffset;
	mGain = inSettings.mGain;
	mMaxChannels = static_cast<unsigned>(inSettings.mChannelLayout.size());
	FrameRate const sourceRate = MeasureGenerators(inSettings.mFrameRate);
	double const factor = OffsetFactor(inSettings.mSpeed, sourceRate, inSettings.mFrameRate);
	if (factor != 1.0)
	{
		mStartOffset = mStartOffset * factor;
	}
	ReserveStackAudioBuffer(mMaxChannels, GetMaxBlockSize(), StackAudioBufferTags::kAudioClipRenderer);
	mHasGain = mGain != 1.0f;
	return result;
}

FrameRate AudioClipRenderer::MeasureGenerators(FrameRate const& inFrameRate)
{
	FrameRate sourceRate = inFrameRate;
	for (Input& input : mInputs)
	{
		if (!input.mGenerator)
		{
			continue;
		}
		InterfaceRef<IAudioGeneratorPrivate> const description(input.mGenerator);
		input.mWidth = description->GetNumChannels();
		sourceRate = description->GetGeneratorFrameRate();
		mMaxChannels = std::max(mMaxChannels, input.mWidth);
		if (mInputs.size() == 1 && input.mWidth < mMaxChannels)
		{
			mShell.Init(input.mWidth);
		}
	}
	mKeepsChannels = KeepsChannels();
	return sourceRate;
}

bool AudioClipRenderer::KeepsChannels() const
{
	if (mInputs.size() != 1 || !mInputs[0].mGenerator || mInputs[0].mWidth != mMaxChannels ||
		mInputs[0].mChannels.size() != mMaxChannels)
	{
		return false;
	}
	AudioChannelMap const& channels = mInputs[0].mChannels;
	return std::all_of(channels.begin(), channels.end(),
		[&](auto const& inEntry) { return inEntry.first == inEntry.second && inEntry.first < mMaxChannels; });
}

InterfaceRef<IAudioGenerator> AudioClipRenderer::Clone()
{
	auto const clone = StartClone(*this);
	clone->mChannelLayout = mChannelLayout;
	clone->mStartOffset = mStartOffset;
	clone->mGain = mGain;
	clone->mHasGain = mHasGain;
	clone->mMaxChannels = mMaxChannels;
	for (Input const& input : mInputs)
	{
		clone->mInputs.push_back(
			{input.mGenerator ? input.mGenerator->Clone() : input.mGenerator, input.mChannels});
	}
	std::sort(clone->mInputs.begin(), clone->mInputs.end(),
		[](Input const& inLeft, Input const& inRight) { return inLeft.mGenerator < inRight.mGenerator; });
	clone->MeasureGenerators(GetFrameRate());
	return clone;
}

TickTime AudioClipRenderer::GetDelay()
{
	TickTime delay;
	if (IsDelayCompensationDisabled())
	{
		return delay;
	}
	ForEachGenerator([&](IAudioGenerator& ioGenerator) { delay = std::max(delay, ioGenerator.GetDelay()); });
	return delay;
}

void AudioClipRenderer::Preroll(TickTime const& inStartTime, bool inReverse)
{
	ForEachGenerator(
		[&](IAudioGenerator& ioGenerator) { ioGenerator.Preroll(inStartTime + mStartOffset, inReverse); });
}

void AudioClipRenderer::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	if (!inForceCompletion)
	{
		return;
	}
	ForEachGenerator(
		[&](IAudioGenerator& ioGenerator)
		{
			// The start offset is left out, unlike in Preroll: the start time stays the caller's.
			ioGenerator.FillInitialDelay(inStartTime, inDelayTime, inReverse, true);
		});
}

void AudioClipRenderer::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	PrefetchRange const range = inRange + mStartOffset;
	ForEachGenerator([&](IAudioGenerator& ioGenerator)
		{ ioGenerator.AccumulatePrefetchRequests(range, inType, inAccumulator); });
}

void AudioClipRenderer::GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse)
{
	TickTime const time = inTime + mStartOffset;
	if (mKeepsChannels && inBuffer.GetNumChannels() == mMaxChannels &&
		inBuffer.GetUseSize() <= GetMaxBlockSize())
	{
		RunGenerator(*mInputs[0].mGenerator, time, inReverse, inBuffer);
	}
	else
	{
		RunGenerators(time, inBuffer, inReverse);
	}
	if (mHasGain)
	{
		inBuffer *= mGain;
	}
}

void AudioClipRenderer::RunGenerators(TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	// Channels below the number of generators stay the caller's, so that clips of one channel each can share
	// a buffer.
	for (unsigned long long channel = mInputs.size(); channel < ioBuffer.GetNumChannels(); ++channel)
	{
		ioBuffer.MarkChannelSilent(channel);
	}
	for (Input const& input : mInputs)
	{
		if (!input.mGenerator)
		{
			continue;
		}
		ScopedStackAudioBuffer const scoped(
			GetStackAudioBuffer(mMaxChannels, StackAudioBufferTags::kAudioClipRenderer));
		dsp::AudioBuffer& scratch = scoped.GetBuffer();
		scratch.SetUseSize(ioBuffer.GetUseSize());
		RunIntoScratch(input, inTime, inReverse, scratch);
		CopyChannels(scratch, input.mChannels, ioBuffer);
	}
}

void AudioClipRenderer::RunIntoScratch(
	Input const& inInput, TickTime const& inTime, bool inReverse, dsp::AudioBuffer& ioScratch)
{
	if (mInputs.size() != 1 || inInput.mWidth >= mMaxChannels)
	{
		RunGenerator(*inInput.mGenerator, inTime, inReverse, ioScratch);
		return;
	}
	ioScratch.SetSilenceFlags(dsp::SilenceFlags::All());
	mShell.Assign(ioScratch.GetChannels(), ioScratch.GetCapacity());
	mShell.SetUseSize(ioScratch.GetUseSize());
	RunGenerator(*inInput.mGenerator, inTime, inReverse, mShell);
	if (!mShell.IsSilent())
	{
		ioScratch.ClearSilenceFlags(~mShell.GetSilenceFlags());
	}
}

std::vector<InterfaceRef<UnknownBase>> AudioClipRenderer::GetInputNodes()
{
	std::vector<InterfaceRef<UnknownBase>> nodes;
	nodes.reserve(mInputs.size());
	for (Input const& input : mInputs)
	{
		nodes.push_back(input.mGenerator);
	}
	return nodes;
}

void AudioClipRenderer::VisitNodes(NodeVisitor& ioVisitor)
{
	for (Input const& input : mInputs)
	{
		if (input.mGenerator)
		{
			ioVisitor.Visit(input.mGenerator);
		}
	}
}

} // namespace SN
