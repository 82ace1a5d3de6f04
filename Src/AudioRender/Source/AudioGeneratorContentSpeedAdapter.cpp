#include "AudioRender/Source/AudioGeneratorContentSpeedAdapter.h"

#include "Sonaro/PrefetchRange.h"

namespace SN
{

int AudioGeneratorContentSpeedAdapter::Create(InterfaceRef<IAudioGenerator> const& inGenerator,
	double inSpeed, InterfaceRef<IAudioGenerator>* outGenerator)
{
	auto const adapter =
		zorvcore::classref::MakeAsyncDestroyedObject<AudioGeneratorContentSpeedAdapter>(inSpeed);
	adapter->Init(inGenerator);
	*outGenerator = adapter;
	return kSuccess;
}

void AudioGeneratorContentSpeedAdapter::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	if (inForceCompletion)
	{
		AudioGeneratorDecorator::FillInitialDelay(inStartTime, inDelayTime, inReverse, true);
	}
}

void AudioGeneratorContentSpeedAdapter::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	AudioGeneratorDecorator::AccumulatePrefetchRequests(inRange / mSpeed, inType, inAccumulator);
}

void AudioGeneratorContentSpeedAdapter::GetAudioData(
	TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse)
{
	AudioGeneratorDecorator::GetAudioData(inTime / mSpeed, inBuffer, inReverse);
}

FrameRate AudioGeneratorContentSpeedAdapter::GetGeneratorFrameRate()
{
	return AudioGeneratorDecorator::GetGeneratorFrameRate() / mSpeed;
}

} // namespace SN
