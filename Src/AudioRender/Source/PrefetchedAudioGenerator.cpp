#include "AudioRender/Source/PrefetchedAudioGenerator.h"

#include "Sonaro/GeneratorPrefetch.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SN
{

int PrefetchedAudioGenerator::Create(InterfaceRef<IAudioGenerator> const& inGenerator,
	InterfaceRef<IAudioRenderContext> const& inRenderContext, TickTime const& inStartTime,
	TickTime const& inEndTime, InterfaceRef<IAudioGenerator>& outGenerator)
{
	auto const prefetched = zorvcore::classref::MakeAsyncDestroyedObject<PrefetchedAudioGenerator>();
	int const result = prefetched->Init(inGenerator, inRenderContext, inStartTime, inEndTime);
	if (ResultSucceeded(result))
	{
		outGenerator = prefetched;
	}
	return result;
}

int PrefetchedAudioGenerator::Init(InterfaceRef<IAudioGenerator> const& inGenerator,
	InterfaceRef<IAudioRenderContext> const& inRenderContext, TickTime const& inStartTime,
	TickTime const& inEndTime)
{
	if (!inRenderContext)
	{
		return eNullPointer;
	}
	AudioGeneratorDecorator::Init(inGenerator);
	mRenderContext = inRenderContext;
	mStartTime = inStartTime;
	mEndTime = inEndTime;
	mSource = AudioGeneratorSource::Create(inGenerator, mRenderContext->GetMaxBlockSize(), mEndTime);
	return kSuccess;
}

InterfaceRef<IAudioGenerator> PrefetchedAudioGenerator::Clone()
{
	InterfaceRef<IAudioGenerator> clone;
	Create(mSource->BetweenRenderings([this] { return GetGenerator()->Clone(); }), mRenderContext, mStartTime,
		mEndTime, clone);
	return clone;
}

void PrefetchedAudioGenerator::Preroll(TickTime const& inStartTime, bool inReverse)
{
	mSource->BetweenRenderings([&] { AudioGeneratorDecorator::Preroll(inStartTime, inReverse); });
	mSource->Discard();
}

void PrefetchedAudioGenerator::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	mSource->BetweenRenderings(
		[&] {
			AudioGeneratorDecorator::FillInitialDelay(inStartTime, inDelayTime, inReverse, inForceCompletion);
		});
}

void PrefetchedAudioGenerator::Reset()
{
	mSource->BetweenRenderings([this] { AudioGeneratorDecorator::Reset(); });
}

void PrefetchedAudioGenerator::InitializeAudioFilters()
{
	mSource->BetweenRenderings([this] { AudioGeneratorDecorator::InitializeAudioFilters(); });
}

void PrefetchedAudioGenerator::ShutdownAudioFilters()
{
	mSource->BetweenRenderings([this] { AudioGeneratorDecorator::ShutdownAudioFilters(); });
}

void PrefetchedAudioGenerator::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	TickTime const wanted = inRange.mEnd - inRange.mStart;
	TickTime const start = std::max(inRange.mStart + mStartTime, kTimeZero);
	TickTime const end = std::min(start + wanted, mEndTime);
	TickTime const duration = start < end ? end - start : kTimeZero;
	// One block more, so that a pull across the end of the range finds its samples too.
	unsigned const numSamples = static_cast<unsigned>(duration.ToFrame32(GetGeneratorFrameRate())) +
								mRenderContext->GetMaxBlockSize();
	inAccumulator.AddPrefetchRequest(inType, mSource, start, numSamples);
}

void PrefetchedAudioGenerator::GetAudioData(
	TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse)
{
	if (!mRenderContext->IsPrefetchEnabled())
	{
		TickTime end = inTime;
		end.AddFrames(inBuffer.GetUseSize(), GetGeneratorFrameRate());
		PrefetchFromAudioGenerator(
			InterfaceRef<IAudioGenerator>::FromThis(this), {inTime, end}, SynchronousPrefetch, 0);
	}
	mSource->ReadPrefetchedAudio(inTime + mStartTime, inBuffer);
	if (inReverse)
	{
		inBuffer.Reverse();
	}
}

} // namespace SN
