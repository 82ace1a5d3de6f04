#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/GeneratorWithInputs.h"
#include "AudioRender/Source/ContentTime.h"
#include "Sonaro/GeneratorSettings.h"

namespace SN
{

// A piece of media on the time line of a clip. Clips may share it: it keeps nothing from block to block.
//
// Time  A block that begins before the media does is silent up to there in an immediate render; otherwise the media's
//       generator is asked for the time below 0. Starts are handed on as they are.
class AudioMediaContentRenderer final : public Implements<AudioMediaContentRenderer, GeneratorWithInputs>,
										public AudioRenderContextClient
{
public:
	// See ISonaroFactory::CreateAudioContentRenderer.
	static int Create(AudioContentSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator);
	int InitFrom(AudioContentSettings const& inSettings);

	// This node itself.
	InterfaceRef<IAudioGenerator> Clone() override { return InterfaceRef<IAudioGenerator>::FromThis(this); }
	TickTime GetDelay() SONARO_NONBLOCKING override
	{
		return IsDelayCompensationDisabled() ? kTimeZero : mGenerator->GetDelay();
	}
	void Preroll(TickTime const& inStartTime, bool inReverse) override
	{
		mGenerator->Preroll(inStartTime, inReverse);
	}
	// Only in one go: nothing without inForceCompletion.
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(
		PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator) override
	{
		mGenerator->AccumulatePrefetchRequests(mTime.Map(inRange), inType, inAccumulator);
	}
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING override;

	unsigned GetNumChannels() SONARO_NONBLOCKING override { return mGeneratorPrivate->GetNumChannels(); }
	AudioChannelLayout GetAudioChannelLayout() override { return mGeneratorPrivate->GetAudioChannelLayout(); }
	FrameRate GetGeneratorFrameRate() override { return GetFrameRate(); }

	std::u16string GetNodeName() override { return u"AudioMediaContentRenderer"; }

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override { ioVisitor.Visit(mGenerator); }

private:
	InterfaceRef<IAudioGenerator> mGenerator;
	// The same object.
	InterfaceRef<IAudioGeneratorPrivate> mGeneratorPrivate;
	ContentTime mTime;
	// Where the media end; kept for the host.
	TickTime mContentEnd;
};

} // namespace SN
