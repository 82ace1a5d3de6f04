#include "AudioRender/Source/AlignToFrameRateAudioGeneratorDecorator.h"

#include "Sonaro/PrefetchRange.h"

namespace SN
{

int AlignToFrameRateAudioGeneratorDecorator::Create(InterfaceRef<IAudioGenerator> const& inGenerator,
	FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator>* outGenerator)
{
	auto const decorator =
		zorvcore::classref::MakeAsyncDestroyedObject<AlignToFrameRateAudioGeneratorDecorator>(inFrameRate);
	decorator->Init(inGenerator);
	*outGenerator = decorator;
	return kSuccess;
}

void AlignToFrameRateAudioGeneratorDecorator::Preroll(TickTime const& inStartTime, bool inReverse)
{
	AudioGeneratorDecorator::Preroll(Align(inStartTime), inReverse);
}

void AlignToFrameRateAudioGeneratorDecorator::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	AudioGeneratorDecorator::FillInitialDelay(Align(inStartTime), inDelayTime, inReverse, inForceCompletion);
}

void AlignToFrameRateAudioGeneratorDecorator::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	AudioGeneratorDecorator::AccumulatePrefetchRequests(
		{Align(inRange.mStart), Align(inRange.mEnd)}, inType, inAccumulator);
}

void AlignToFrameRateAudioGeneratorDecorator::GetAudioData(
	TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse)
{
	AudioGeneratorDecorator::GetAudioData(Align(inTime), inBuffer, inReverse);
}

} // namespace SN
