#pragma once

#include "Sonaro/IAsyncAudioSource.h"
#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "Sonaro/Types.h"
#include "Vexilon/AudioMapEntry.h"
#include "Vexilon/MediaVector.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <mutex>
#include <utility>

namespace SN
{

// A whole generator as a source that can be read ahead. Its time line, from 0 to a duration, is cut into
// chunks of a fixed length, which are rendered whole, forwards, and kept in memory that the media manager
// may take back.
//
// Threads  PrefetchAudioData: any, several at once; the generator is rendered by one at a time.
//          ReadPrefetchedAudio: one at a time, the render thread; it does not wait, allocate or free, and
//          what is not there is silence. Discard: any. The source may be released on the render thread:
//          its destruction happens elsewhere.
class AudioGeneratorSource final : public Implements<AudioGeneratorSource, IAsyncAudioSource>
{
public:
	static constexpr Identifier<AudioGeneratorSource> kIdentifier{
		0x8a1be3620c7d4f59ull, 0xb2f6950e4d3ac871ull};

	// inChunkSize: samples. Raises the null-pointer exception for a generator that does not answer for
	// IAudioGeneratorPrivate.
	static InterfaceRef<AudioGeneratorSource> Create(
		InterfaceRef<IAudioGenerator> const& inGenerator, unsigned inChunkSize, TickTime const& inDuration);

	// Renders the chunks that the range touches and that are not there yet.
	void PrefetchAudioData(
		unsigned long long const& inTimeStamp, TickTime const& inTime, unsigned inNumSamples) override;
	int ReadPrefetchedAudio(TickTime const& inTime, dsp::AudioBuffer& inBuffer) SONARO_NONBLOCKING override;
	int GetPrefetchState() override { return eNotImplemented; }

	// Forgets every chunk that is not being read or rendered at the moment.
	void Discard() { mStore->Discard(); }

	// Calls inAction while nobody renders the generator, waiting for the chunk at hand. Not on the render
	// path.
	template <class Action>
	auto BetweenRenderings(Action&& inAction)
	{
		std::lock_guard const lock(mRenderMutex);
		return std::forward<Action>(inAction)();
	}

private:
	using Store = VX::MediaVector<VX::AudioMapEntry>;

	// A place on the time line, in samples.
	struct Position
	{
		unsigned long long mChunk = 0;
		unsigned long long mOffset = 0;
	};

	void Init(
		InterfaceRef<IAudioGenerator> const& inGenerator, unsigned inChunkSize, TickTime const& inDuration);
	Position FindPosition(TickTime const& inTime) const;
	void RenderChunk(unsigned long long inChunk, unsigned long long inTimeStamp);

	InterfaceRef<IAudioGenerator> mGenerator;
	InterfaceRef<IAudioGeneratorPrivate> mGeneratorPrivate;
	unsigned long long mChunkSize = 0;
	InterfaceRef<Store> mStore;
	// These two of ReadPrefetchedAudio alone: the part of a chunk that is read, and the part of the
	// output that is not written yet.
	dsp::AudioSubBuffer mChunkWindow;
	dsp::AudioSubBuffer mOutputCursor;
	unsigned long long mNumChunks = 0;
	TickTime mDuration;
	// Held while an absent chunk is rendered.
	std::mutex mRenderMutex;
};

} // namespace SN
