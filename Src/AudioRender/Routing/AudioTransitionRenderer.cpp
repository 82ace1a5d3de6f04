#include "AudioRender/Routing/AudioTransitionRenderer.h"

#include "AudioRender/Core/FillUp.h"
#include "AudioRender/Core/StackAudioBufferTags.h"
#include "AudioRender/Track/FirstBlock.h"
#include "Sonaro/PrefetchRange.h"

#include <algorithm>

namespace SN
{

int AudioTransitionRenderer::InitFrom(AudioTransitionSettings const& inSettings)
{
	int const result = AudioRenderContextClient::Init(inSettings.mContext, inSettings.mFrameRate);
	mSettings = inSettings;
	InterfaceRef<IAudioGeneratorPrivate> const wider = FindWiderClip();
	mNumChannels = wider ? wider->GetNumOutputChannels() : 0;
	ReserveStackAudioBuffer(mNumChannels, GetMaxBlockSize(), StackAudioBufferTags::kAudioTransitionRenderer);
	return result;
}

InterfaceRef<IAudioGeneratorPrivate> AudioTransitionRenderer::FindWiderClip() const
{
	InterfaceRef<IAudioGeneratorPrivate> const outgoing = mSettings.mOutgoing;
	InterfaceRef<IAudioGeneratorPrivate> const incoming = mSettings.mIncoming;
	bool const takesIncoming =
		!outgoing || (incoming && incoming->GetNumOutputChannels() > outgoing->GetNumOutputChannels());
	return takesIncoming ? incoming : outgoing;
}

InterfaceRef<IAudioGenerator> AudioTransitionRenderer::Clone()
{
	auto const clone = StartClone(*this);
	clone->CopyTimesFrom(*this);
	clone->mSettings = mSettings;
	clone->mSettings.mOutgoing = mSettings.mOutgoing->Clone();
	clone->mSettings.mIncoming = mSettings.mIncoming->Clone();
	clone->mNumChannels = mNumChannels;
	return clone;
}

TickTime AudioTransitionRenderer::GetDelay()
{
	return IsDelayCompensationDisabled()
			   ? kTimeZero
			   : std::max(mSettings.mOutgoing->GetDelay(), mSettings.mIncoming->GetDelay());
}

void AudioTransitionRenderer::Preroll(TickTime const& inStartTime, bool inReverse)
{
	mSettings.mOutgoing->Preroll(inStartTime, inReverse);
	mSettings.mIncoming->Preroll(inStartTime + GetIncomingOffset(), inReverse);
}

void AudioTransitionRenderer::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	mSettings.mOutgoing->FillInitialDelay(inStartTime, inDelayTime, inReverse, inForceCompletion);
	mSettings.mIncoming->FillInitialDelay(inStartTime, inDelayTime, inReverse, inForceCompletion);
}

void AudioTransitionRenderer::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	mSettings.mOutgoing->AccumulatePrefetchRequests(inRange + GetOutgoingOffset(), inType, inAccumulator);
	mSettings.mIncoming->AccumulatePrefetchRequests(inRange + GetIncomingOffset(), inType, inAccumulator);
}

void AudioTransitionRenderer::GetAudioData(TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	unsigned const frames = ioBuffer.GetUseSize();
	if (frames > GetMaxBlockSize())
	{
		RenderFirstBlock(*this, inTime, ioBuffer, inReverse);
		return;
	}
	ScopedStackAudioBuffer const scratch(
		GetStackAudioBuffer(mNumChannels, StackAudioBufferTags::kAudioTransitionRenderer));
	dsp::AudioBuffer& outgoing = scratch.GetBuffer();
	outgoing.SetUseSize(frames);
	mSettings.mOutgoing->GetAudioData(inTime + GetOutgoingOffset(), outgoing, inReverse);
	FillUp(outgoing, frames);
	mSettings.mIncoming->GetAudioData(inTime + GetIncomingOffset(), ioBuffer, inReverse);
	FillUp(ioBuffer, frames);
	if (inReverse)
	{
		// Progress rises with time.
		outgoing.Reverse();
		ioBuffer.Reverse();
	}
	if (!ioBuffer.IsSilent() || !outgoing.IsSilent())
	{
		TickTime const oneSample(1, GetFrameRate());
		Mix(outgoing, ioBuffer,
			{static_cast<float>(inTime / mSettings.mTransitionDuration),
				static_cast<float>(oneSample / mSettings.mTransitionDuration)});
	}
	if (inReverse)
	{
		ioBuffer.Reverse();
	}
}

void AudioTransitionRenderer::Mix(
	dsp::AudioBuffer const& inOutgoing, dsp::AudioBuffer& ioIncoming, Course const& inCourse) const
{
	unsigned const count = ioIncoming.GetUseSize();
	for (unsigned long long channel = 0; channel < ioIncoming.GetNumChannels(); ++channel)
	{
		float const* const outgoing = inOutgoing.GetChannel(channel);
		float* const buffer = ioIncoming.GetChannel(channel);
		bool const outgoingIsSilent = inOutgoing.IsChannelSilent(channel);
		bool const incomingIsSilent = ioIncoming.IsChannelSilent(channel);
		if (!outgoingIsSilent && !incomingIsSilent)
		{
			ForEachGain(count, inCourse,
				[=](unsigned inSample, float inOutgoingGain, float inIncomingGain) {
					buffer[inSample] =
						inOutgoingGain * outgoing[inSample] + inIncomingGain * buffer[inSample];
				});
		}
		else if (!incomingIsSilent)
		{
			ForEachGain(count, inCourse,
				[=](unsigned inSample, float, float inIncomingGain)
				{ buffer[inSample] = inIncomingGain * buffer[inSample]; });
		}
		else if (!outgoingIsSilent && buffer)
		{
			ForEachGain(count, inCourse,
				[=](unsigned inSample, float inOutgoingGain, float)
				{ buffer[inSample] = inOutgoingGain * outgoing[inSample]; });
			ioIncoming.NoteChannelWrite(channel, count);
		}
	}
}

template <class Use>
void AudioTransitionRenderer::ForEachGain(unsigned inCount, Course const& inCourse, Use const& inUse) const
{
	IAudioTransition& transition = *mSettings.mTransition;
	float progress = inCourse.mStart;
	for (unsigned sample = 0; sample < inCount; ++sample)
	{
		float outgoingGain = 0.0f;
		float incomingGain = 0.0f;
		transition.GetGainValue(mSettings.mParameters, progress, outgoingGain, incomingGain);
		inUse(sample, outgoingGain, incomingGain);
		progress += inCourse.mStep;
	}
}

AudioChannelLayout AudioTransitionRenderer::GetAudioChannelLayout()
{
	InterfaceRef<IAudioGeneratorPrivate> const wider = FindWiderClip();
	return wider ? wider->GetAudioChannelLayout() : AudioChannelLayout();
}

void AudioTransitionRenderer::VisitNodes(NodeVisitor& ioVisitor)
{
	ioVisitor.Visit(mSettings.mOutgoing);
	ioVisitor.Visit(mSettings.mIncoming);
}

} // namespace SN
