#pragma once

#include "AudioRender/Source/AudioGeneratorDecorator.h"
#include "Sonaro/PrefetchRange.h"

namespace SN
{

// Lets a generator run at another speed: it is asked for times divided by the speed, and its frame rate
// counts as divided likewise. Starts and head starts are passed on as they are.
class AudioGeneratorContentSpeedAdapter final : public AudioGeneratorDecorator
{
public:
	static int Create(InterfaceRef<IAudioGenerator> const& inGenerator, double inSpeed,
		InterfaceRef<IAudioGenerator>* outGenerator)
	{
		auto const adapter =
			zorvcore::classref::MakeAsyncDestroyedObject<AudioGeneratorContentSpeedAdapter>(inSpeed);
		adapter->Init(inGenerator);
		*outGenerator = adapter;
		return kSuccess;
	}

	explicit AudioGeneratorContentSpeedAdapter(double inSpeed)
		: mSpeed(inSpeed)
	{
	}

	// 0, whatever the generator's.
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }
	// Only in one go: nothing without inForceCompletion.
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override
	{
		if (inForceCompletion)
		{
			AudioGeneratorDecorator::FillInitialDelay(inStartTime, inDelayTime, inReverse, true);
		}
	}
	void AccumulatePrefetchRequests(
		PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator) override
	{
		AudioGeneratorDecorator::AccumulatePrefetchRequests(inRange / mSpeed, inType, inAccumulator);
	}
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING override
	{
		AudioGeneratorDecorator::GetAudioData(inTime / mSpeed, inBuffer, inReverse);
	}
	FrameRate GetGeneratorFrameRate() override
	{
		return AudioGeneratorDecorator::GetGeneratorFrameRate() / mSpeed;
	}

private:
	double mSpeed;
};

} // namespace SN
