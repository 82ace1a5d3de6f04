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

} // namespace

template <class Function>
void AudioClipRenderer::ForEachGenerator(Function const& inFunction)
{
	for (auto const& [generator, channels] : mGenerators)
	{
		if (generator)
		{
			inFunction(*generator);
		}
	}
}

int AudioClipRenderer::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate,
	std::map<InterfaceRef<IAudioGenerator>, AudioChannelMap> const& inGenerators,
	AudioChannelLayout const& inChannelLayout, TickTime const& inStartOffset, float inGain, double inSpeed,
	InterfaceRef<IAudioGenerator>* outGenerator)
{
	auto const clip = zorvcore::classref::MakeObject<AudioClipRenderer>();
	int const result = clip->Init(inContext, inFrameRate);
	if (result == eNullPointer)
	{
		return result;
	}
	clip->mGenerators = inGenerators;
	clip->mChannelLayout = inChannelLayout;
	clip->mStartOffset = inStartOffset;
	clip->mGain = inGain;
	clip->mMaxChannels = static_cast<unsigned>(inChannelLayout.size());
	FrameRate const sourceRate = clip->MeasureGenerators(inFrameRate);
	double const factor = OffsetFactor(inSpeed, sourceRate, inFrameRate);
	if (factor != 1.0)
	{
		clip->mStartOffset = clip->mStartOffset * factor;
	}
	clip->ReserveStackAudioBuffer(
		clip->mMaxChannels, clip->GetMaxBlockSize(), StackAudioBufferTags::kAudioClipRenderer);
	clip->mHasGain = clip->mGain != 1.0f;
	if (ResultSucceeded(result))
	{
		*outGenerator = clip;
	}
	return result;
}

FrameRate AudioClipRenderer::MeasureGenerators(FrameRate const& inFrameRate)
{
	FrameRate sourceRate = inFrameRate;
	for (auto const& [generator, channels] : mGenerators)
	{
		mGeneratorWidths.push_back(0);
		if (!generator)
		{
			continue;
		}
		InterfaceRef<IAudioGeneratorPrivate> const description(generator);
		unsigned const numChannels = description->GetNumChannels();
		mGeneratorWidths.back() = numChannels;
		sourceRate = description->GetGeneratorFrameRate();
		mMaxChannels = std::max(mMaxChannels, numChannels);
		if (mGenerators.size() == 1 && numChannels < mMaxChannels)
		{
			mShell.Init(numChannels);
		}
	}
	mKeepsChannels = KeepsChannels();
	if (mKeepsChannels)
	{
		// Not looked at, and there may be very many clips.
		mGeneratorWidths = {};
	}
	return sourceRate;
}

bool AudioClipRenderer::KeepsChannels() const
{
	if (mGenerators.size() != 1 || mGeneratorWidths[0] != mMaxChannels ||
		mGenerators.begin()->second.size() != mMaxChannels)
	{
		return false;
	}
	AudioChannelMap const& channels = mGenerators.begin()->second;
	return std::all_of(channels.begin(), channels.end(),
		[&](auto const& inEntry) { return inEntry.first == inEntry.second && inEntry.first < mMaxChannels; });
}

InterfaceRef<IAudioGenerator> AudioClipRenderer::Clone()
{
	auto const clone = zorvcore::classref::MakeObject<AudioClipRenderer>();
	static_cast<AudioRenderContextClient&>(*clone) = *this;
	clone->mChannelLayout = mChannelLayout;
	clone->mStartOffset = mStartOffset;
	clone->mGain = mGain;
	clone->mHasGain = mHasGain;
	clone->mMaxChannels = mMaxChannels;
	for (auto const& [generator, channels] : mGenerators)
	{
		clone->mGenerators.emplace(
			generator ? generator->Clone() : InterfaceRef<IAudioGenerator>(), channels);
	}
	// In an order of their own.
	clone->MeasureGenerators(GetFrameRate());
	return clone;
}

bool AudioClipRenderer::HasHistory()
{
	return std::any_of(mGenerators.begin(), mGenerators.end(),
		[](auto const& inEntry) { return inEntry.first && inEntry.first->HasHistory(); });
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
			// Without the start offset, unlike Preroll: deliberately so.
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
		// What the generator does not write is silent.
		unsigned const frames = inBuffer.GetUseSize();
		inBuffer.Zero();
		mGenerators.begin()->first->GetAudioData(time, inBuffer, inReverse);
		FillUp(inBuffer, frames);
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
	// From the number of generators, not of channels: deliberately so.
	for (unsigned long long channel = mGenerators.size(); channel < ioBuffer.GetNumChannels(); ++channel)
	{
		ioBuffer.MarkChannelSilent(channel);
	}
	std::size_t index = 0;
	for (auto const& [generator, channels] : mGenerators)
	{
		unsigned const numChannels = mKeepsChannels ? mMaxChannels : mGeneratorWidths[index++];
		if (!generator)
		{
			continue;
		}
		ScopedStackAudioBuffer const scoped(
			GetStackAudioBuffer(mMaxChannels, StackAudioBufferTags::kAudioClipRenderer));
		dsp::AudioBuffer& scratch = scoped.GetBuffer();
		scratch.SetUseSize(ioBuffer.GetUseSize());
		scratch.SetSilenceFlags(dsp::SilenceFlags::All());
		RunGenerator(*generator, numChannels, inTime, inReverse, scratch);
		CopyChannels(scratch, channels, ioBuffer);
	}
}

void AudioClipRenderer::RunGenerator(IAudioGenerator& ioGenerator, unsigned inNumChannels,
	TickTime const& inTime, bool inReverse, dsp::AudioBuffer& ioScratch)
{
	if (mGenerators.size() != 1 || inNumChannels >= mMaxChannels)
	{
		ioGenerator.GetAudioData(inTime, ioScratch, inReverse);
		return;
	}
	mShell.Assign(ioScratch.GetChannels(), ioScratch.GetCapacity());
	mShell.SetUseSize(ioScratch.GetUseSize());
	ioGenerator.GetAudioData(inTime, mShell, inReverse);
	if (!mShell.IsSilent())
	{
		ioScratch.ClearSilenceFlags(~mShell.GetSilenceFlags());
	}
}

void AudioClipRenderer::Reset()
{
	ForEachGenerator([&](IAudioGenerator& ioGenerator) { ioGenerator.Reset(); });
}

void AudioClipRenderer::InitializeAudioFilters()
{
	ForEachGenerator([&](IAudioGenerator& ioGenerator) { ioGenerator.InitializeAudioFilters(); });
}

void AudioClipRenderer::ShutdownAudioFilters()
{
	ForEachGenerator([&](IAudioGenerator& ioGenerator) { ioGenerator.ShutdownAudioFilters(); });
}

std::vector<InterfaceRef<UnknownBase>> AudioClipRenderer::GetInputNodes()
{
	std::vector<InterfaceRef<UnknownBase>> nodes;
	for (auto const& [generator, channels] : mGenerators)
	{
		nodes.push_back(generator);
	}
	return nodes;
}

void* AudioClipRenderer::QueryMap(GUID const& inIdentifier)
{
	void* const found = zorvcore::classref::QueryInterfaces<IAudioGenerator, IAudioGeneratorPrivate,
		IAudioRenderGraphNodeInfo>(this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

} // namespace SN
