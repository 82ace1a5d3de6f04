#include "ReversedGenerator.h"

#include "Sonaro/PrefetchRange.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost
{

ReversedGenerator::ReversedGenerator(SN::InterfaceRef<SN::IAudioGenerator> const& inSource,
	std::int64_t inFrames, SN::FrameRate const& inFrameRate)
	: mSource(inSource),
	  mFrames(inFrames),
	  mFrameRate(inFrameRate),
	  mEnd(inFrames, inFrameRate)
{
}

SN::InterfaceRef<SN::IAudioGenerator> ReversedGenerator::Clone()
{
	return zorvcore::classref::MakeObject<ReversedGenerator>(mSource->Clone(), mFrames, mFrameRate);
}

void ReversedGenerator::Preroll(SN::TickTime const& inStartTime, bool inReverse)
{
	mSource->Preroll(Mirror(inStartTime), !inReverse);
}

void ReversedGenerator::FillInitialDelay(
	SN::TickTime const& inStartTime, SN::TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	mSource->FillInitialDelay(Mirror(inStartTime), inDelayTime, !inReverse, inForceCompletion);
}

void ReversedGenerator::AccumulatePrefetchRequests(
	SN::PrefetchRange const& inRange, SN::PrefetchType inType, SN::PrefetchRequestAccumulator& inAccumulator)
{
	mSource->AccumulatePrefetchRequests(
		{Mirror(inRange.mEnd), Mirror(inRange.mStart)}, inType, inAccumulator);
}

void ReversedGenerator::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	std::int64_t const first = inTime.ToFrame64(mFrameRate);
	mSource->GetAudioData(
		SN::TickTime(mFrames - first - ioBuffer.GetUseSize(), mFrameRate), ioBuffer, !inReverse);
}

void* ReversedGenerator::QueryMap(SN::Guid const& inIdentifier)
{
	void* const found = zorvcore::classref::QueryInterfaces<SN::IAudioGenerator>(this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

} // namespace SonaroHost
