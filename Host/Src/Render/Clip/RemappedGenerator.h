#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/Types.h"

#include <cstdint>

namespace SonaroHost
{

// How the frames of a graph are counted.
struct FrameMap
{
	// Frames of the graph, from its time 0 on.
	std::int64_t mFrames = 0;
	SN::FrameRate mSourceRate;
	// The rate at which they are asked for: frame i at this rate is frame i of the graph.
	SN::FrameRate mRate;
	// They are played from their end to their start.
	bool mIsReversed = false;
};

// A graph whose frames are counted anew, so that what it feeds hears a programme that runs forward at a rate of its
// own. Nothing is resampled.
class RemappedGenerator final : public SN::Implements<RemappedGenerator, SN::IAudioGenerator>
{
public:
	RemappedGenerator(SN::InterfaceRef<SN::IAudioGenerator> const& inSource, FrameMap const& inMap);

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override;
	bool HasHistory() override { return mSource->HasHistory(); }
	SN::TickTime GetDelay() override;
	void Preroll(SN::TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(SN::TickTime const& inStartTime, SN::TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) override;
	void AccumulatePrefetchRequests(SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) override;
	void Reset() override { mSource->Reset(); }
	void InitializeAudioFilters() override { mSource->InitializeAudioFilters(); }
	void ShutdownAudioFilters() override { mSource->ShutdownAudioFilters(); }

private:
	// The time in the graph at which a run of so many frames begins.
	SN::TickTime MapRun(SN::TickTime const& inTime, std::int64_t inCount) const;
	bool MapDirection(bool inReverse) const { return inReverse != mMap.mIsReversed; }

	SN::InterfaceRef<SN::IAudioGenerator> mSource;
	FrameMap mMap;
};

} // namespace SonaroHost
