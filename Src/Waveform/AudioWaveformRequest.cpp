#include "Sonaro/AudioWaveformRequest.h"

#include "Sonaro/AudioWaveformQueue.h"
#include "Vexilon/ITimeTransform.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"

#include <utility>

namespace SN
{

InterfaceRef<AudioWaveformRequest> AudioWaveformRequest::CreateAudioWaveformRequest(
	InterfaceRef<IAudioWaveformGenerator> inGenerator, TickTime const& inStartTime, TickTime const& inEndTime,
	InterfaceRef<VX::ITimeTransform> const& inTimeTransform, unsigned long long inSampleInterval,
	InterfaceRef<IAudioWaveformBuffer> inBuffer, std::shared_ptr<zorvcore::threads::Gate> inGate,
	bool inRequestFlag)
{
	return zorvcore::classref::MakeObject<AudioWaveformRequest>(std::move(inGenerator), inStartTime,
		inEndTime, inTimeTransform, inSampleInterval, std::move(inBuffer), std::move(inGate), inRequestFlag);
}

AudioWaveformRequest::AudioWaveformRequest(InterfaceRef<IAudioWaveformGenerator> inGenerator,
	TickTime const& inStartTime, TickTime const& inEndTime,
	InterfaceRef<VX::ITimeTransform> const& inTimeTransform, unsigned long long inSampleInterval,
	InterfaceRef<IAudioWaveformBuffer> inBuffer, std::shared_ptr<zorvcore::threads::Gate> inGate,
	bool inRequestFlag)
	: mGenerator(std::move(inGenerator)),
	  mStartTime(inStartTime),
	  mEndTime(inEndTime),
	  mTimeTransform(inTimeTransform),
	  mSampleInterval(inSampleInterval),
	  mBuffer(std::move(inBuffer)),
	  mGate(std::move(inGate)),
	  mRequestFlag(inRequestFlag)
{
}

AudioWaveformRequest::~AudioWaveformRequest() = default;

void AudioWaveformRequest::Process()
{
	mGenerator->GenerateWaveform(
		mStartTime, mEndTime, mTimeTransform, mSampleInterval, mBuffer, false, mGate, mRequestFlag);
}

void AudioWaveformRequest::Complete(int)
{
	auto const queue = AudioWaveformQueue::GetQueue();
	// False when the queue was cleared in between: the request goes with what was cleared.
	queue->Queue([self = InterfaceRef<AudioWaveformRequest>::FromThis(this)] { self->Process(); });
}

bool AudioWaveformRequest::operator==(AudioWaveformRequest const& inOther) const
{
	return mGenerator == inOther.mGenerator && mStartTime == inOther.mStartTime &&
		   mEndTime == inOther.mEndTime && mSampleInterval == inOther.mSampleInterval &&
		   mBuffer == inOther.mBuffer && mGate == inOther.mGate;
}

} // namespace SN
