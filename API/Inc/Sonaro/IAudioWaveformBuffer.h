#pragma once

#include "Sonaro/Types.h"
#include "zorvcore/threads/AtomicIntegral.h"

#include <memory>
#include <vector>

namespace SN
{

// The waveform of one request, shared by the generator that writes it and those who draw it.
//
// Columns   One inner vector per channel. A generator writes columns of three floats each, minimum,
//           maximum and RMS of the column's samples, one after the other: column i is at 3 * i.
// Drawing   Columns may be drawn while they come. Before its first SetSampleCount the generator gives
//           every vector its full size, and none of them changes its size again; a column below the
//           count is not written again. Whoever has read a count above 0, or IsComplete as true, may
//           read the vectors and their sizes, and the columns below the count.
// Flags     The two host flags and the station mean what the host agrees with itself: the engine reads
//           neither and posts nothing.
// Threads   Any, but for two: the channels as said above; the station is set before other threads know
//           the buffer, or while none of them asks for it.
class SONARO_API IAudioWaveformBuffer : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioWaveformBuffer> kIdentifier{
		0x0f673de9d79af09dull, 0x3eeab886c264af45ull};

	// The messaging station for news of this buffer; empty until it is set.
	virtual ImmutableString GetStationID() = 0;

	// The number of this buffer in the process, from 1.
	virtual unsigned GetBufferId() = 0;

	// The number of vectors in GetChannels.
	virtual unsigned long long GetNumChannels() SONARO_NONBLOCKING = 0;
	// The size of the first channel, in floats and not in columns.
	virtual unsigned long long GetNumSamples() = 0;
	// The low 32 bits of what SetSampleCount was given last, 0 at first.
	virtual unsigned GetSampleCount() = 0;
	// The columns, a vector for each channel, which the generator makes and fills as said above.
	virtual std::vector<std::vector<float>>& GetChannels() = 0;

	// Whether the generator is done, with all it wrote to be seen.
	virtual bool IsComplete() = 0;

	// Tells the generator that nobody wants the rest.
	virtual void Cancel() = 0;

	// False at first.
	virtual bool GetHostFlag() = 0;
	// Any value at any time; the host's own.
	virtual void SetHostFlag(bool inFlag) = 0;

	// By the generator, after the last column.
	virtual void SetComplete() = 0;

	// True until Cancel: completion does not change it.
	virtual bool IsPending() = 0;

	// What IsPending asks: a count that Cancel sets to 0. To be kept by those who outlive the buffer.
	virtual std::shared_ptr<zorvcore::threads::AtomicIntegral<int>> const& GetPending() = 0;

	// Publishes the columns below inCount.
	virtual void SetSampleCount(unsigned long long inCount) = 0;

	// An empty name makes the buffer register a station of its own, which it disposes of at its end or at
	// the next call. Any other station stays the caller's.
	virtual void SetStationID(ImmutableString const& inStationID) = 0;

	// Any value at any time; the host's own.
	virtual void SetSecondHostFlag(bool inFlag) = 0;
	// True at first.
	virtual bool GetSecondHostFlag() = 0;

	// A reference to this object.
	virtual InterfaceRef<IAudioWaveformBuffer> GetSelfReference() = 0;

	~IAudioWaveformBuffer() override = default;
};

} // namespace SN
