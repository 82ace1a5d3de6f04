#pragma once

#include "AudioRender/Source/AudioGeneratorDecorator.h"
#include "AudioRender/Source/AudioGeneratorSource.h"
#include "Sonaro/IAudioRenderContext.h"

namespace SN
{

// Puts read-ahead in front of a generator that is expensive to pull: what is wanted soon becomes a request
// on a source of its own, and pulls read what that has rendered. Without prefetch each pull renders first.
//
// Time     Its time 0 lies at inStartTime of the generator; the generator ends at inEndTime of its own.
// Clones   Have a cache of their own.
// Threads  As AudioGeneratorSource: pulls on the render thread, rendering on the prefetch thread. Preroll,
//          FillInitialDelay, Reset, Clone and the filters' start and stop wait for a chunk that is being rendered.
class PrefetchedAudioGenerator final : public AudioGeneratorDecorator
{
public:
	static int Create(InterfaceRef<IAudioGenerator> const& inGenerator,
		InterfaceRef<IAudioRenderContext> const& inRenderContext, TickTime const& inStartTime,
		TickTime const& inEndTime, InterfaceRef<IAudioGenerator>& outGenerator);

	InterfaceRef<IAudioGenerator> Clone() override;
	bool HasHistory() override { return true; }
	// Also empties the cache, so that a jump starts clean.
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING override;
	void Reset() override;
	void InitializeAudioFilters() override;
	void ShutdownAudioFilters() override;

	std::u16string GetNodeName() override { return u"PrefetchedAudioGenerator"; }

private:
	int Init(InterfaceRef<IAudioGenerator> const& inGenerator,
		InterfaceRef<IAudioRenderContext> const& inRenderContext, TickTime const& inStartTime,
		TickTime const& inEndTime);

	InterfaceRef<IAudioRenderContext> mRenderContext;
	InterfaceRef<AudioGeneratorSource> mSource;
	TickTime mEndTime;
	TickTime mStartTime;
};

} // namespace SN
