#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "Sonaro/IAudioRecordCompletion.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/ILiveAudioParameterOwner.h"

namespace SN
{

// Passes every operation on to the generator that it wraps, so that a subclass changes only what it must.
// A clone is a plain decorator around a clone of the generator: what a subclass changes is not carried
// over. Without a generator the first operation that is passed on raises the null-pointer exception.
class AudioGeneratorDecorator
	: public Implements<AudioGeneratorDecorator, IAudioGenerator, IAudioGeneratorPrivate,
		  IAudioRecordCompletion, IAudioRenderGraphNodeInfo, ILiveAudioParameterOwner>
{
public:
	void Init(InterfaceRef<IAudioGenerator> const& inGenerator);

	InterfaceRef<IAudioGenerator> Clone() override;
	bool HasHistory() override { return mGenerator->HasHistory(); }
	TickTime GetDelay() override { return mGenerator->GetDelay(); }
	void Preroll(TickTime const& inStartTime, bool inReverse) override
	{
		mGenerator->Preroll(inStartTime, inReverse);
	}
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) override
	{
		mGenerator->FillInitialDelay(inStartTime, inDelayTime, inReverse, inForceCompletion);
	}
	void AccumulatePrefetchRequests(
		PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator) override
	{
		mGenerator->AccumulatePrefetchRequests(inRange, inType, inAccumulator);
	}
	void GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) override
	{
		mGenerator->GetAudioData(inTime, inBuffer, inReverse);
	}
	void Reset() override { mGenerator->Reset(); }
	void InitializeAudioFilters() override { mGenerator->InitializeAudioFilters(); }
	void ShutdownAudioFilters() override { mGenerator->ShutdownAudioFilters(); }

	unsigned GetNumChannels() override { return mGeneratorPrivate->GetNumChannels(); }
	unsigned GetNumOutputChannels() override { return mGeneratorPrivate->GetNumOutputChannels(); }
	AudioChannelLayout GetAudioChannelLayout() override { return mGeneratorPrivate->GetAudioChannelLayout(); }
	FrameRate GetGeneratorFrameRate() override { return mGeneratorPrivate->GetGeneratorFrameRate(); }

	void NotifyRecordComplete(InterfaceRef<UnknownBase> const& inRecording) override;
	void CollectLiveParameters(LiveAudioParameterMap& outParameters) override;

	std::u16string GetNodeName() override { return u"AudioGeneratorDecorator"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {mGenerator}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

protected:
	InterfaceRef<IAudioGenerator> const& GetGenerator() const { return mGenerator; }
	InterfaceRef<IAudioGeneratorPrivate> const& GetGeneratorPrivate() const { return mGeneratorPrivate; }

private:
	InterfaceRef<IAudioGenerator> mGenerator;
	// The same object; empty when it does not answer.
	InterfaceRef<IAudioGeneratorPrivate> mGeneratorPrivate;
};

} // namespace SN
