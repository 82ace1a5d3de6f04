#include "EffectStage.h"

#include "Sonaro/AudioFilterException.h"
#include "SonaroHost/Engine/RenderContextScope.h"
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
	if (mTerms.mLatency > 0)
	{
		mDelay.Init(
			mTerms.mChannels, static_cast<unsigned>(mTerms.mLatency), std::max(mTerms.mMaxBlockSize, 1u));
	}
}

SN::InterfaceRef<SN::IAudioProcessor> EffectStage::Clone(
	SN::FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval)
{
	return zorvcore::classref::MakeObject<EffectStage>(
		mEffect->Clone(inFrameRate, inMaxBlockSize, inControlInterval),
		EffectTerms{
			mTerms.mChannels, inMaxBlockSize, mTerms.mClock.Clone(), mTerms.mLatency, mTerms.mHealth});
}

void EffectStage::ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const&)
{
	dsp::AudioSubBuffer window;
	window.Init(std::min<unsigned long long>(mTerms.mChannels, ioBuffer.GetNumChannels()));
	mTerms.mClock.Take(ioBuffer.GetUseSize(),
		[&](FrameRun const& inRun, unsigned inOffset)
		{
			for (FrameRun left = inRun; left.mCount > 0;)
			{
				std::int64_t const count = Prepare(left);
				window.Assign(ioBuffer, inOffset + static_cast<unsigned>(inRun.mCount - left.mCount));
				window.SetUseSize(static_cast<unsigned>(count));
				Process(window, left.mFirst);
				left = {left.GetFrame(count), left.mStep, left.mCount - count};
			}
		});
}

void EffectStage::Process(dsp::AudioBuffer& ioBlock, std::int64_t inFrame)
{
	if (mHasFault)
	{
		if (mTerms.mLatency > 0)
		{
			mDelay.Write(ioBlock);
			mDelay.Read(ioBlock);
		}
		return;
	}
	try
	{
		mEffect->ProcessAudioData(ioBlock, mTerms.mClock.ToCurveTime(inFrame));
	}
	catch (SN::AudioFilterException const&)
	{
		NoteFault(EffectFault::Kind::kCrash, ioBlock);
	}
	catch (EffectFault const& fault)
	{
		NoteFault(fault.GetKind(), ioBlock);
	}
}

// What the effect had under way is silent.
void EffectStage::NoteFault(EffectFault::Kind inKind, dsp::AudioBuffer& outBlock)
{
	outBlock.Zero();
	mHasFault = true;
	if (mTerms.mHealth)
	{
		mTerms.mHealth->mFault.store(inKind);
	}
}

std::int64_t EffectStage::Prepare(FrameRun const& inRun)
{
	std::int64_t const largest = std::min<std::int64_t>(inRun.mCount, std::max(mTerms.mMaxBlockSize, 1u));
	if (!mParameters)
	{
		return largest;
	}
	constexpr std::int64_t kGrid = kControlInterval;
	// The remainder is never negative, also for frames below 0.
	std::int64_t const within = ((inRun.mFirst % kGrid) + kGrid) % kGrid;
	mParameters->UpdateControls(mTerms.mClock.ToCurveTime(inRun.mFirst - within));
	bool const moves = mParameters->GetNextInterestingTime(-SN::kTimeMax) != SN::kTimeMax;
	return moves ? std::min(largest, inRun.mStep > 0 ? kGrid - within : within + 1) : largest;
}

void EffectStage::Preroll(SN::TickTime const& inTime, bool inReverse)
{
	mEffect->Preroll(inTime, inReverse);
}

void EffectStage::CollectLiveParameters(SN::LiveAudioParameterMap& outParameters)
{
	if (mLiveParameters)
	{
		mLiveParameters->CollectLiveParameters(outParameters);
	}
}

} // namespace SonaroHost::Sequence
