#pragma once

#include "AudioRender/Source/AudioGeneratorDecorator.h"

namespace SN
{

// Lets a generator run at another speed: it is asked for times divided by the speed, and its frame rate
// counts as divided likewise. Starts and head starts are passed on as they are.
class AudioGeneratorContentSpeedAdapter final : public AudioGeneratorDecorator
{
public:
	static int Create(InterfaceRef<IAudioGenerator> const& inGenerator, double inSpeed,
		InterfaceRef<IAudioGenerator>* outGenerator);

	explicit AudioGeneratorContentSpeedAdapter(double inSpeed)
		: mSpeed(inSpeed)
	{
	}

	// 0, whatever the generator's.
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }
	// Only in one go: nothing without inForceCompletion.
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING override;
	FrameRate GetGeneratorFrameRate() override;

private:
	double mSpeed;
};

} // namespace SN
