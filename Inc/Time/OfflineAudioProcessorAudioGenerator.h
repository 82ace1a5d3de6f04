#pragma once

#include "Sonaro/GeneratorSettings.h"
#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IProcessedAudioStream.h"

#include <memory>

namespace SN
{

// Plays what an offline process makes of a generator: it waits for finished chunks and cuts them into the blocks that are
// asked for. Preroll starts a new stream, whose first sample is that of time 0; from there on times only rise.
// Silence where there is no stream yet, after its end and after a failure.
//
// Threads  GetAudioData waits up to a day for a chunk, so this has no place in a playback. Meanwhile the process pulls the
//          generator on a thread of its own.
class OfflineAudioProcessorAudioGenerator final
	: public Implements<OfflineAudioProcessorAudioGenerator, IAudioGenerator>
{
public:
	static int Create(
		OfflineAudioProcessorSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator);

	explicit OfflineAudioProcessorAudioGenerator(OfflineAudioProcessorSettings const& inSettings);

	// There is none: a process is not repeated.
	InterfaceRef<IAudioGenerator> Clone() override { return {}; }
	bool HasHistory() override { return false; }
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const&, TickTime const&, bool, bool) SONARO_NONBLOCKING override {}
	void AccumulatePrefetchRequests(PrefetchRange const&, PrefetchType, PrefetchRequestAccumulator&) override
	{
	}
	void GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) override;
	void Reset() override {}
	void InitializeAudioFilters() override;
	void ShutdownAudioFilters() override;

private:
	// Makes the chunk that holds inTime, or ends later, the current one; false when no more comes.
	bool ReachChunk(TickTime const& inTime);
	void FetchNextChunk();
	// Fills the beginning of ioRest from the current chunk, and returns how many samples that is.
	unsigned TakeFromChunk(TickTime const& inTime, dsp::AudioBuffer& ioRest);

	OfflineAudioProcessorSettings mSettings;
	InterfaceRef<IProcessedAudioStream> mStream;
	std::shared_ptr<dsp::AudioBuffer> mCurrentChunk;
	TickTime mChunkStartTime;
	TickTime mChunkEndTime;
};

} // namespace SN
