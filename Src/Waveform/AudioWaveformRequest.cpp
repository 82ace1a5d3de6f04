#include "Sonaro/AudioWaveformRequest.h"

#include "Sonaro/AudioWaveformQueue.h"
#include "Vexilon/ITimeTransform.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"

#include <tuple>
#include <utility>

namespace SN
{

InterfaceRef<AudioWaveformRequest> AudioWaveformRequest::CreateAudioWaveformRequest(
	AudioWaveformRequestSettings const& inSettings)
{
	return zorvcore::classref::MakeObject<AudioWaveformRequest>(inSettings);
}

InterfaceRef<AudioWaveformRequest> AudioWaveformRequest::CreateAudioWaveformRequest(
	InterfaceRef<IAudioWaveformGenerator> inGenerator, TickTime const& inStartTime, TickTime const& inEndTime,
	InterfaceRef<VX::ITimeTransform> const& inTimeTransform, unsigned long long inSampleInterval,
	InterfaceRef<IAudioWaveformBuffer> inBuffer, std::shared_ptr<zorvcore::threads::Gate> inGate,
	bool inRequestFlag)
{
	return CreateAudioWaveformRequest({std::move(inGenerator), inStartTime, inEndTime, inTimeTransform,
		inSampleInterval, std::move(inBuffer), std::move(inGate), inRequestFlag});
}

AudioWaveformRequest::AudioWaveformRequest(AudioWaveformRequestSettings const& inSettings)
	: mSettings(inSettings)
{
}

AudioWaveformRequest::~AudioWaveformRequest() = default;

void AudioWaveformRequest::Process()
{
	mSettings.mGenerator->GenerateWaveform(mSettings.mStartTime, mSettings.mEndTime, mSettings.mTimeTransform,
		mSettings.mSampleInterval, mSettings.mBuffer, false, mSettings.mGate, mSettings.mRequestFlag);
}

void AudioWaveformRequest::Complete(int)
{
	auto const queue = AudioWaveformQueue::GetQueue();
	// False when the queue was cleared in between: the request goes with what was cleared.
	queue->Queue([self = InterfaceRef<AudioWaveformRequest>::FromThis(this)] { self->Process(); });
}

bool AudioWaveformRequest::operator==(AudioWaveformRequest const& inOther) const
{
	auto const listCompared = [](AudioWaveformRequestSettings const& inSettings)
	{
		return std::tie(inSettings.mGenerator, inSettings.mStartTime, inSettings.mEndTime,
			inSettings.mSampleInterval, inSettings.mBuffer, inSettings.mGate);
	};
	return listCompared(mSettings) == listCompared(inOther.mSettings);
}

} // namespace SN
