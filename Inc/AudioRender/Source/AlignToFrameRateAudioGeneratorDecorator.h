#pragma once

#include "AudioRender/Source/AudioGeneratorDecorator.h"

namespace SN
{

// Moves every position that it is asked for down onto a frame of a rate; lengths stay as they are.
class AlignToFrameRateAudioGeneratorDecorator final : public AudioGeneratorDecorator
{
public:
	static int Create(InterfaceRef<IAudioGenerator> const& inGenerator, FrameRate const& inFrameRate,
		InterfaceRef<IAudioGenerator>* outGenerator)
	{
		auto const decorator =
			zorvcore::classref::MakeAsyncDestroyedObject<AlignToFrameRateAudioGeneratorDecorator>(
				inFrameRate);
		decorator->Init(inGenerator);
		*outGenerator = decorator;
		return kSuccess;
	}

	explicit AlignToFrameRateAudioGeneratorDecorator(FrameRate const& inFrameRate)
		: mAlignFrameRate(inFrameRate)
	{
	}

	void Preroll(TickTime const& inStartTime, bool inReverse) override
	{
		AudioGeneratorDecorator::Preroll(Align(inStartTime), inReverse);
	}
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override
	{
		AudioGeneratorDecorator::FillInitialDelay(
			Align(inStartTime), inDelayTime, inReverse, inForceCompletion);
	}
	void AccumulatePrefetchRequests(
		PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator) override
	{
		AudioGeneratorDecorator::AccumulatePrefetchRequests(
			{Align(inRange.mStart), Align(inRange.mEnd)}, inType, inAccumulator);
	}
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING override
	{
		AudioGeneratorDecorator::GetAudioData(Align(inTime), inBuffer, inReverse);
	}

private:
	TickTime Align(TickTime inTime) const { return inTime.AlignToFrame(mAlignFrameRate); }

	FrameRate mAlignFrameRate;
};

} // namespace SN
