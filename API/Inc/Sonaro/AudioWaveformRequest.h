#pragma once

#include "Sonaro/IAudioPrefetchNotify.h"
#include "Sonaro/IAudioWaveformGenerator.h"

#include <memory>

namespace SN
{

// What a request is made of, as IAudioWaveformGenerator takes it.
struct AudioWaveformRequestSettings
{
	// Required: Process raises the null-pointer exception without one.
	InterfaceRef<IAudioWaveformGenerator> mGenerator = {};
	TickTime mStartTime = {};
	TickTime mEndTime = {};
	InterfaceRef<VX::ITimeTransform> mTimeTransform = {};
	// Samples of a column.
	unsigned long long mSampleInterval = 1;
	InterfaceRef<IAudioWaveformBuffer> mBuffer = {};
	std::shared_ptr<zorvcore::threads::Gate> mGate = {};
	bool mRequestFlag = false;
};

// One range of a generator that is to be computed into a buffer. Given as the notify to a prefetch of the
// range's audio, it goes on to the waveform thread by itself when the prefetch has ended.
//
// Threads  Constant once made, and so any.
class SONARO_API AudioWaveformRequest final
	: public Implements<AudioWaveformRequest, AudioPrefetch::IAudioPrefetchNotify>
{
public:
	static constexpr Identifier<AudioWaveformRequest> kIdentifier{
		0xef154e4fbd689c8aull, 0x51fb3f27c6694d28ull};

	static InterfaceRef<AudioWaveformRequest> CreateAudioWaveformRequest(
		AudioWaveformRequestSettings const& inSettings);
	// The same settings one by one.
	static InterfaceRef<AudioWaveformRequest> CreateAudioWaveformRequest(
		InterfaceRef<IAudioWaveformGenerator> inGenerator, TickTime const& inStartTime,
		TickTime const& inEndTime, InterfaceRef<VX::ITimeTransform> const& inTimeTransform,
		unsigned long long inSampleInterval, InterfaceRef<IAudioWaveformBuffer> inBuffer,
		std::shared_ptr<zorvcore::threads::Gate> inGate, bool inRequestFlag);

	// For CreateAudioWaveformRequest.
	explicit AudioWaveformRequest(AudioWaveformRequestSettings const& inSettings);
	~AudioWaveformRequest() override;

	// Calls the generator, on the calling thread; its result is dropped. Raises the null-pointer exception
	// without a generator.
	void Process();

	// Queues Process. A prefetch that was given up does not end the request: the generator then reads
	// what it lacks by itself.
	void Complete(int inResult) override;

	// Whether both would write the same: the transform and the flag follow from the generator and are
	// not compared.
	bool operator==(AudioWaveformRequest const& inOther) const;

private:
	AudioWaveformRequestSettings const mSettings;
};

} // namespace SN
