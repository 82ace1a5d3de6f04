#include "EffectStage.h"

#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

EffectStage::EffectStage(SN::InterfaceRef<SN::IAudioProcessor> const& inEffect, EffectTerms const& inTerms)
	: mEffect(inEffect),
	  mParameters(inEffect),
	  mLiveParameters(inEffect),
	  mTerms(inTerms)
{
}

SN::InterfaceRef<SN::IAudioProcessor> EffectStage::Clone(
	SN::FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval)
{
	EffectTerms terms = mTerms;
	terms.mMaxBlockSize = inMaxBlockSize;
	return zorvcore::classref::MakeObject<EffectStage>(
		mEffect->Clone(inFrameRate, inMaxBlockSize, inControlInterval), terms);
}

void EffectStage::ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const& inTime)
{
	unsigned const frames = ioBuffer.GetUseSize();
	if (ioBuffer.GetNumChannels() == mTerms.mChannels && frames <= mTerms.mMaxBlockSize)
	{
		mEffect->ProcessAudioData(ioBuffer, mTerms.mTime.Map(inTime));
		return;
	}
	dsp::AudioSubBuffer window;
	window.Init(std::min<unsigned long long>(mTerms.mChannels, ioBuffer.GetNumChannels()));
	unsigned const largest = std::max(mTerms.mMaxBlockSize, 1u);
	for (unsigned done = 0; done < frames; done += largest)
	{
		window.Assign(ioBuffer, done);
		window.SetUseSize(std::min(largest, frames - done));
		mEffect->ProcessAudioData(window, mTerms.mTime.Map(inTime + SN::TickTime(done, mTerms.mFrameRate)));
	}
}

void EffectStage::Preroll(SN::TickTime const& inTime, bool inReverse)
{
	mEffect->Preroll(mTerms.mTime.Map(inTime), inReverse);
}

SN::TickTime EffectStage::GetNextInterestingTime(SN::TickTime const& inTime)
{
	// As for a shifted parameter.
	return mParameters->GetNextInterestingTime(-SN::kTimeMax) == SN::kTimeMax ? SN::kTimeMax : inTime;
}

void EffectStage::UpdateControls(SN::TickTime const& inTime)
{
	mParameters->UpdateControls(mTerms.mTime.Map(inTime));
}

void* EffectStage::QueryMap(SN::Guid const& inIdentifier)
{
	if (inIdentifier == SN::ILiveAudioParameterOwner::kIdentifier)
	{
		return mLiveParameters.Get();
	}
	void* const found =
		zorvcore::classref::QueryInterfaces<SN::IAudioProcessor, SN::IAudioRenderGraphNodeInfo>(
			this, inIdentifier);
	void* const owner =
		mParameters ? zorvcore::classref::QueryInterfaces<SN::IParameterOwnerMixin>(this, inIdentifier)
					: nullptr;
	return found ? found : owner ? owner : Unknown::QueryMap(inIdentifier);
}

} // namespace SonaroHost::Sequence
