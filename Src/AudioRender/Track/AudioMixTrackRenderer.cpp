#include "AudioRender/Track/AudioMixTrackRenderer.h"

#include "AudioRender/Core/FillUp.h"
#include "AudioRender/Core/StackAudioBufferTags.h"
#include "AudioRender/Track/FirstBlock.h"
#include "AudioRender/Track/PanWorkingWidth.h"

#include <algorithm>

namespace SN
{

int AudioMixTrackRenderer::InitFrom(AudioMixTrackSettings const& inSettings)
{
	mSource = inSettings.mSource;
	return InitTrack(inSettings);
}

void AudioMixTrackRenderer::MakeBuffers()
{
	InterfaceRef<IAudioPanProcessor> const& panner = mChain.GetPanProcessor();
	unsigned const panWidth = panner ? GetPanWorkingWidth(*panner) : 0;
	mWidestChannels = std::max(GetNumChannels(), panWidth);
	mCache.Init(mWidestChannels, GetMaxBlockSize());
	if (panner)
	{
		// Also for a pan in the middle: the host may move it while playing.
		ReserveStackAudioSubBuffer(panWidth);
		ReserveStackAudioBuffer(
			GetNumChannels(), GetMaxBlockSize(), StackAudioBufferTags::kAudioMixTrackRenderer);
	}
}

InterfaceRef<IAudioGenerator> AudioMixTrackRenderer::Clone()
{
	auto const self = InterfaceRef<IAudioGenerator>::FromThis(this);
	if (InterfaceRef<IAudioGenerator> const known = FindClone(self))
	{
		return known;
	}
	auto const clone = StartClone(*this);
	AddClone(self, clone);
	clone->mSource = mSource->Clone();
	clone->CloneTrackFrom(*this);
	return clone;
}

void AudioMixTrackRenderer::Preroll(TickTime const& inStartTime, bool inReverse)
{
	if (!mPrerolled)
	{
		mSource->Preroll(inStartTime, inReverse);
		mChain.Preroll(inStartTime, inReverse);
		mPrerolled = true;
	}
	// A preroll never fades.
	mMute.StartOver(GetFrameRate());
}

void AudioMixTrackRenderer::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	mSource->AccumulatePrefetchRequests(inRange, inType, inAccumulator);
}

void AudioMixTrackRenderer::GetAudioData(TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	if (ioBuffer.GetUseSize() > GetMaxBlockSize())
	{
		RenderFirstBlock(*this, inTime, ioBuffer, inReverse);
		return;
	}
	mMute.Update();
	// What nothing writes is silent.
	ioBuffer.Zero();
	InterfaceRef<IAudioPanProcessor> const& panner = mChain.GetPanProcessor();
	if (panner && !panner->DoesNotAlterAudio())
	{
		ScopedStackAudioBuffer const scratch(
			GetStackAudioBuffer(GetNumChannels(), StackAudioBufferTags::kAudioMixTrackRenderer));
		dsp::AudioBuffer& source = scratch.GetBuffer();
		source.SetUseSize(ioBuffer.GetUseSize());
		source.Zero();
		PullSource(inTime, source, inReverse);
		RunChain(source, &ioBuffer, inTime, inReverse);
	}
	else
	{
		PullSource(inTime, ioBuffer, inReverse);
		RunChain(ioBuffer, nullptr, inTime, inReverse);
	}
	GetLastLine().Process(ioBuffer);
	mMute.Process(ioBuffer);
}

void AudioMixTrackRenderer::PullSource(TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	if (!mMute.IsComplete())
	{
		unsigned const frames = ioBuffer.GetUseSize();
		mSource->GetAudioData(inTime, ioBuffer, inReverse);
		FillUp(ioBuffer, frames);
	}
}

void AudioMixTrackRenderer::RunChain(
	dsp::AudioBuffer& ioSource, dsp::AudioBuffer* outPan, TickTime const& inTime, bool inReverse)
{
	unsigned const width = outPan ? mChain.GetPanProcessor()->GetNumInputChannels() : GetNumChannels();
	// Windows take more memory than the rest of a track, and are cheap to make.
	dsp::AudioSubBuffer window;
	window.Init(std::min<unsigned long long>(width, ioSource.GetNumChannels()));
	window.Assign(ioSource, 0);
	dsp::AudioSubBuffer panOutput;
	if (outPan)
	{
		panOutput.Init(std::min<unsigned long long>(mWidestChannels, outPan->GetNumChannels()));
		panOutput.Assign(*outPan, 0);
	}
	mChain.Run({window, outPan ? &panOutput : nullptr, inTime, GetFrameRate(), inReverse}, *this,
		{.mDelayOwner = this,
			.mTimesAlwaysRise = true,
			.mBlocksSkipSendDelays = true,
			.mIdlePanRests = true});
}

void AudioMixTrackRenderer::VisitNodes(NodeVisitor& ioVisitor)
{
	ioVisitor.Visit(mSource);
	mChain.VisitNodes(ioVisitor);
}

} // namespace SN
