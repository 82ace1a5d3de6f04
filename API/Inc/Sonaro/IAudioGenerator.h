#pragma once

#include "Sonaro/PrefetchRange.h"
#include "Sonaro/PrefetchType.h"
#include "Sonaro/Types.h"

namespace SN
{

class PrefetchRequestAccumulator;

// A source of audio: a node of the render graph.
//
// Order of calls for a start at time T
//   InitializeAudioFilters   once, before the effects are first used
//   AccumulatePrefetchRequests  as often as wanted, also while playing
//   Preroll(T)
//   GetAudioData             for consecutive blocks
//   Reset                    before the next start elsewhere
//   ShutdownAudioFilters     at the end
//
// Threads  One at a time. AccumulatePrefetchRequests alone may come on another than GetAudioData, never
//          beside Preroll or Reset; a node with state that it touches guards it itself.
// Errors   None of these reports one: missing input is silence. Exceptions of the libraries beneath
//          pass through to the caller.
class SONARO_API IAudioGenerator : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioGenerator> kIdentifier{0x4e6843c336c75e84ull, 0x34b619bc539baf05ull};

	// A new node of the same kind and settings, without run-time history, its children cloned too. A
	// node that can be shared asks its context for a clone made before; nodes without stream state may
	// return themselves. Not at the same time as a pull of this node.
	virtual InterfaceRef<IAudioGenerator> Clone() = 0;

	// True when the output at a time depends on what was asked for before, here or in a child.
	virtual bool HasHistory() = 0;

	// How late the output runs behind the requested time because of processing inside; never negative.
	// 0 while the context's delay compensation is off.
	virtual TickTime GetDelay() SONARO_NONBLOCKING = 0;

	// Prepares for playback from inStartTime on: the lowest time of the first block, also in reverse. Hands
	// no sample to the caller.
	virtual void Preroll(TickTime const& inStartTime, bool inReverse) = 0;

	// Gives latent content below a head start of inDelayTime before inStartTime, so that its output is
	// ready when its first block is due: in one go with inForceCompletion, otherwise as far as playing
	// has come.
	virtual void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING = 0;

	// Announces which range will soon be read. Leaves turn it into requests on the accumulator.
	virtual void AccumulatePrefetchRequests(
		PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator) = 0;

	// Fills the UseSize samples of inBuffer with the audio from inTime on, in this node's time base.
	// inTime is the lowest time of the block in either direction; in reverse, the block holds the same
	// samples in the opposite order. Every channel is written or flagged silent.
	virtual void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING = 0;

	// Drops run-time state after a discontinuity; settings stay.
	virtual void Reset() = 0;

	// Starts the effect instances below this node; may allocate.
	virtual void InitializeAudioFilters() = 0;
	// Stops them. They may be started again.
	virtual void ShutdownAudioFilters() = 0;

	~IAudioGenerator() override = default;
};

} // namespace SN
