#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

// The base of generators that give silence: whatever the time, direction and length of a request, the
// whole buffer is flagged. It has no history, no latency and nothing to prepare.
class SilentGenerator : public IAudioGenerator
{
public:
	bool HasHistory() override { return false; }
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }
	void Preroll(TickTime const&, bool) override {}
	void FillInitialDelay(TickTime const&, TickTime const&, bool, bool) SONARO_NONBLOCKING override {}
	void AccumulatePrefetchRequests(PrefetchRange const&, PrefetchType, PrefetchRequestAccumulator&) override
	{
	}
	void GetAudioData(TickTime const&, dsp::AudioBuffer& inBuffer, bool) SONARO_NONBLOCKING override
	{
		inBuffer.Zero();
	}
	void Reset() override {}
	void InitializeAudioFilters() override {}
	void ShutdownAudioFilters() override {}
};

} // namespace SN
