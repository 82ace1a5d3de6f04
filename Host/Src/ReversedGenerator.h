#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/Types.h"

#include <cstdint>

namespace SonaroHost
{

// The first inFrames frames of a graph from their end to their start, as a graph of its own: what stands
// behind it hears a programme that runs forward.
class ReversedGenerator final : public SN::IAudioGenerator
{
public:
	ReversedGenerator(SN::InterfaceRef<SN::IAudioGenerator> const& inSource, std::int64_t inFrames,
		SN::FrameRate const& inFrameRate);

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override;
	bool HasHistory() override { return mSource->HasHistory(); }
	SN::TickTime GetDelay() override { return mSource->GetDelay(); }
	void Preroll(SN::TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(SN::TickTime const& inStartTime, SN::TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) override;
	void AccumulatePrefetchRequests(SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) override;
	void Reset() override { mSource->Reset(); }
	void InitializeAudioFilters() override { mSource->InitializeAudioFilters(); }
	void ShutdownAudioFilters() override { mSource->ShutdownAudioFilters(); }

protected:
	void* QueryMap(SN::Guid const& inIdentifier) override;

private:
	SN::TickTime Mirror(SN::TickTime const& inTime) const { return mEnd - inTime; }

	SN::InterfaceRef<SN::IAudioGenerator> mSource;
	std::int64_t mFrames;
	SN::FrameRate mFrameRate;
	SN::TickTime mEnd;
};

} // namespace SonaroHost
