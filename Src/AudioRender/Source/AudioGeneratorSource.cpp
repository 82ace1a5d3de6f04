#include "AudioRender/Source/AudioGeneratorSource.h"

#include "Sonaro/GeneratorPrefetch.h"
#include "zorvcore/classref/AsyncDestruction.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace SN
{

InterfaceRef<AudioGeneratorSource> AudioGeneratorSource::Create(
	InterfaceRef<IAudioGenerator> const& inGenerator, unsigned inChunkSize, TickTime const& inDuration)
{
	auto const source = zorvcore::classref::MakeAsyncDestroyedObject<AudioGeneratorSource>();
	source->Init(inGenerator, inChunkSize, inDuration);
	return source;
}

void AudioGeneratorSource::Init(
	InterfaceRef<IAudioGenerator> const& inGenerator, unsigned inChunkSize, TickTime const& inDuration)
{
	mGenerator = inGenerator;
	mChunkSize = inChunkSize;
	mDuration = inDuration;
	mGeneratorPrivate = mGenerator;
	mChunkWindow.Init(mGeneratorPrivate->GetNumChannels());
	mOutputCursor.Init(mGeneratorPrivate->GetNumChannels());

	long long const frames = mDuration.ToFrame64(mGeneratorPrivate->GetGeneratorFrameRate());
	if (frames > 0 && mChunkSize > 0)
	{
		// The quotient is in single precision, which decides about the last chunk of very long generators.
		mNumChunks = static_cast<unsigned long long>(
			std::ceil(static_cast<float>(frames) / static_cast<float>(mChunkSize)));
	}
	mStore = zorvcore::classref::MakeObject<Store>();
	mStore->Init(mNumChunks);
}

void AudioGeneratorSource::PrefetchAudioData(
	unsigned long long const& inTimeStamp, TickTime const& inTime, unsigned inNumSamples)
{
	unsigned long long remaining = inNumSamples;
	Position position = FindPosition(std::max(inTime, kTimeZero));
	while (position.mChunk < mNumChunks)
	{
		if (!mStore->Touch(position.mChunk))
		{
			RenderChunk(position.mChunk, inTimeStamp);
		}
		remaining -= std::min(remaining, mChunkSize - position.mOffset);
		position = {position.mChunk + 1, 0};
		if (remaining == 0)
		{
			break;
		}
	}
}

void AudioGeneratorSource::RenderChunk(unsigned long long inChunk, unsigned long long inTimeStamp)
{
	std::lock_guard const lock(mRenderMutex);
	// Somebody may have rendered it meanwhile.
	if (mStore->Touch(inChunk))
	{
		return;
	}
	auto const buffer = std::make_shared<dsp::AudioBuffer>(
		mGeneratorPrivate->GetNumChannels(), static_cast<unsigned>(mChunkSize));
	FrameRate const frameRate = mGeneratorPrivate->GetGeneratorFrameRate();
	TickTime const start(static_cast<long long>(inChunk * mChunkSize), frameRate);
	TickTime const end(static_cast<long long>((inChunk + 1) * mChunkSize), frameRate);
	PrefetchFromAudioGenerator(mGenerator, {start, end}, SynchronousPrefetch, inTimeStamp);
	mGenerator->GetAudioData(start, *buffer, false);
	mStore->Store(inChunk, VX::AudioMapEntry(buffer));
}

int AudioGeneratorSource::ReadPrefetchedAudio(TickTime const& inTime, dsp::AudioBuffer& inBuffer)
{
	if (inTime < kTimeZero)
	{
		inBuffer.Zero();
		return kSuccess;
	}
	for (unsigned long long channel = mOutputCursor.GetNumChannels(); channel < inBuffer.GetNumChannels();
		 ++channel)
	{
		inBuffer.MarkChannelSilent(channel);
	}
	Position position = FindPosition(inTime);
	mOutputCursor.Assign(inBuffer, 0);
	unsigned long long remaining = inBuffer.GetUseSize();
	while (remaining > 0)
	{
		if (position.mChunk >= mNumChunks)
		{
			mOutputCursor.Zero();
			break;
		}
		auto const count = static_cast<unsigned>(std::min(mChunkSize - position.mOffset, remaining));
		auto const copy = [&](VX::AudioMapEntry const& inEntry)
		{
			mChunkWindow.Assign(*inEntry.GetBuffer(), static_cast<unsigned>(position.mOffset));
			mOutputCursor.CopyFrom(mChunkWindow, count);
		};
		if (!mStore->Read(position.mChunk, copy))
		{
			mOutputCursor.Zero();
		}
		remaining -= count;
		if (remaining > 0)
		{
			mOutputCursor.ShiftOffset(count);
			position = {position.mChunk + 1, 0};
		}
	}
	return kSuccess;
}

AudioGeneratorSource::Position AudioGeneratorSource::FindPosition(TickTime const& inTime) const
{
	long long const frame = inTime.ToFrame64(mGeneratorPrivate->GetGeneratorFrameRate());
	auto const start = static_cast<unsigned long long>(std::max(frame, 0ll));
	return mChunkSize == 0 ? Position{} : Position{start / mChunkSize, start % mChunkSize};
}

} // namespace SN
