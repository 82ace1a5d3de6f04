#pragma once

#include "AudioRender/Core/GeneratorWithInputs.h"
#include "Sonaro/IAudioRecordCompletion.h"
#include "zorvcore/classref/AsyncDestruction.h"

namespace SN
{

// Passes every operation on to the generator that it wraps, so that a subclass changes only what it must.
// A clone is a plain decorator around a clone of the generator: what a subclass changes is not carried
// over. Without a generator the first operation that is passed on raises the null-pointer exception.
class AudioGeneratorDecorator
	: public Implements<AudioGeneratorDecorator, LiveGeneratorWithInputs, IAudioRecordCompletion>
{
public:
	void Init(InterfaceRef<IAudioGenerator> const& inGenerator)
	{
		mGenerator = inGenerator;
		mGeneratorPrivate = inGenerator;
	}

	InterfaceRef<IAudioGenerator> Clone() override
	{
		auto const clone = zorvcore::classref::MakeAsyncDestroyedObject<AudioGeneratorDecorator>();
		clone->Init(mGenerator->Clone());
		return clone;
	}
	TickTime GetDelay() SONARO_NONBLOCKING override { return mGenerator->GetDelay(); }
	void Preroll(TickTime const& inStartTime, bool inReverse) override
	{
		mGenerator->Preroll(inStartTime, inReverse);
	}
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override
	{
		mGenerator->FillInitialDelay(inStartTime, inDelayTime, inReverse, inForceCompletion);
	}
	void AccumulatePrefetchRequests(
		PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator) override
	{
		mGenerator->AccumulatePrefetchRequests(inRange, inType, inAccumulator);
	}
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING override
	{
		mGenerator->GetAudioData(inTime, inBuffer, inReverse);
	}

	unsigned GetNumChannels() SONARO_NONBLOCKING override { return mGeneratorPrivate->GetNumChannels(); }
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override
	{
		return mGeneratorPrivate->GetNumOutputChannels();
	}
	AudioChannelLayout GetAudioChannelLayout() override { return mGeneratorPrivate->GetAudioChannelLayout(); }
	FrameRate GetGeneratorFrameRate() override { return mGeneratorPrivate->GetGeneratorFrameRate(); }

	void NotifyRecordComplete(InterfaceRef<UnknownBase> const& inRecording) override
	{
		NotifyInputs(inRecording);
	}

	std::u16string GetNodeName() override { return u"AudioGeneratorDecorator"; }

protected:
	InterfaceRef<IAudioGenerator> const& GetGenerator() const { return mGenerator; }
	void VisitNodes(NodeVisitor& ioVisitor) override { ioVisitor.Visit(mGenerator); }

private:
	InterfaceRef<IAudioGenerator> mGenerator;
	// The same object; empty when it does not answer.
	InterfaceRef<IAudioGeneratorPrivate> mGeneratorPrivate;
};

} // namespace SN
