#pragma once

#include "Sonaro/IAudioWaveformBuffer.h"
#include "Sonaro/Types.h"

#include <memory>

namespace VX
{
class ITimeTransform;
}

namespace zorvcore::threads
{
class Gate;
}

namespace SN
{

// Computes waveforms of some audio; the host's. The results of all operations are result codes.
//
// Times     Of the generator's own time line; the range ends before inEndTime.
// Interval  inSampleInterval: samples of the generator's rate in a column of the buffer.
// Giving up A generator that runs for long looks now and then whether the buffer is still pending and
//           whether AudioWaveformQueue::IsJobAborted, and returns early.
// Gate      One to wait at between columns while it is closed; null for none. Stopping the queue does
//           not open it.
// Threads   Requests call from the waveform thread, one at a time; a host may call from any thread.
class SONARO_API IAudioWaveformGenerator : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioWaveformGenerator> kIdentifier{
		0xb802d7a8e97e2ba1ull, 0xb7562cda4294c3daull};

	// The range that has audio and the number of channels that a buffer gets.
	virtual int GetWaveformInfo(TickTime& outStart, TickTime& outEnd, unsigned long long& outChannels) = 0;

	// Each writes the waveform of the range into inBuffer. The host agrees with itself what the options
	// mean; the engine hands them on and sets none, except that requests have inOption false.
	virtual int GenerateWaveform(TickTime const& inStartTime, TickTime const& inEndTime,
		unsigned long long inSampleInterval, InterfaceRef<IAudioWaveformBuffer> inBuffer, bool inOption,
		bool inRequestFlag) = 0;
	// The same, waiting between columns while inGate is closed.
	virtual int GenerateWaveform(TickTime const& inStartTime, TickTime const& inEndTime,
		unsigned long long inSampleInterval, InterfaceRef<IAudioWaveformBuffer> inBuffer,
		std::shared_ptr<zorvcore::threads::Gate> inGate, bool inOption, bool inRequestFlag) = 0;
	// With inTransform, the range is one of the transform's time line; empty for none.
	virtual int GenerateWaveform(TickTime const& inStartTime, TickTime const& inEndTime,
		InterfaceRef<VX::ITimeTransform> const& inTransform, unsigned long long inSampleInterval,
		InterfaceRef<IAudioWaveformBuffer> inBuffer, bool inOption,
		std::shared_ptr<zorvcore::threads::Gate> inGate, bool inRequestFlag) = 0;

	// A reference to this object.
	virtual InterfaceRef<IAudioWaveformGenerator> GetSelfReference() = 0;

	~IAudioWaveformGenerator() override = default;
};

// A generator that asks inGenerator for a range that lies later by inOffset. GetWaveformInfo stays that
// of inGenerator, in whose times it answers.
SONARO_API InterfaceRef<IAudioWaveformGenerator> CreateAudioWaveformGeneratorOffsetDecorator(
	InterfaceRef<IAudioWaveformGenerator> const& inGenerator, TickTime inOffset);

} // namespace SN
