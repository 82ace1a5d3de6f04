#include "RemappedGenerator.h"

#include "Sonaro/PrefetchRange.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost
{

RemappedGenerator::RemappedGenerator(
	SN::InterfaceRef<SN::IAudioGenerator> const& inSource, FrameMap const& inMap)
	: mSource(inSource),
	  mMap(inMap)
{
}

SN::InterfaceRef<SN::IAudioGenerator> RemappedGenerator::Clone()
{
	return zorvcore::classref::MakeObject<RemappedGenerator>(mSource->Clone(), mMap);
}

SN::TickTime RemappedGenerator::GetDelay()
{
	return SN::TickTime(mSource->GetDelay().ToFrame64(mMap.mSourceRate), mMap.mRate);
}

void RemappedGenerator::Preroll(SN::TickTime const& inStartTime, bool inReverse)
{
	mSource->Preroll(MapRun(inStartTime, 0), MapDirection(inReverse));
}

void RemappedGenerator::FillInitialDelay(
	SN::TickTime const& inStartTime, SN::TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	SN::TickTime const delay(inDelayTime.ToFrame64(mMap.mRate), mMap.mSourceRate);
	mSource->FillInitialDelay(MapRun(inStartTime, 0), delay, MapDirection(inReverse), inForceCompletion);
}

void RemappedGenerator::AccumulatePrefetchRequests(
	SN::PrefetchRange const& inRange, SN::PrefetchType inType, SN::PrefetchRequestAccumulator& inAccumulator)
{
	// Ends between two frames count whole.
	std::int64_t const count = (inRange.mEnd - inRange.mStart).ToFrame64(mMap.mRate) + 2;
	SN::TickTime const start = MapRun(inRange.mStart, count);
	mSource->AccumulatePrefetchRequests(
		{start, start + SN::TickTime(count, mMap.mSourceRate)}, inType, inAccumulator);
}

void RemappedGenerator::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	mSource->GetAudioData(MapRun(inTime, ioBuffer.GetUseSize()), ioBuffer, MapDirection(inReverse));
}

SN::TickTime RemappedGenerator::MapRun(SN::TickTime const& inTime, std::int64_t inCount) const
{
	std::int64_t const first = inTime.ToFrame64(mMap.mRate);
	return {mMap.mIsReversed ? mMap.mFrames - first - inCount : first, mMap.mSourceRate};
}

} // namespace SonaroHost
