#include "EffectStage.h"

#include "Sonaro/AudioFilterException.h"
#include "SonaroHost/Base/FiniteSamples.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "zorvaccelerate/FiniteSamples.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost::Sequence
{

EffectStage::EffectStage(SN::InterfaceRef<SN::IAudioProcessor> const& inEffect, EffectTerms const& inTerms)
	: mEffect(inEffect),
	  mParameters(inEffect),
	  mLiveParameters(inEffect),
	  mTerms(inTerms),
	  mPlannedDelay(inEffect->GetDelay())
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
		EffectTerms{mTerms.mChannels, inMaxBlockSize, mTerms.mClock.Clone(), mTerms.mLatency, mTerms.mHealth,
			mTerms.mJumps});
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
				Process(window, {left.mFirst, left.mStep, count});
				left = {left.GetFrame(count), left.mStep, left.mCount - count};
			}
		});
}

void EffectStage::Process(dsp::AudioBuffer& ioBlock, FrameRun const& inRun)
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
	CheckInput(ioBlock, inRun);
	try
	{
		mEffect->ProcessAudioData(ioBlock, mTerms.mClock.ToCurveTime(inRun.mFirst));
		NoteLatency();
	}
	catch (SN::AudioFilterException const&)
	{
		TakeFault(EffectFault::Kind::kCrash, inRun.mFirst, ioBlock);
	}
	catch (EffectFault const& fault)
	{
		TakeFault(fault.GetKind(), inRun.GetFrame(std::int64_t{fault.GetFrame()} - mTerms.mLatency), ioBlock);
	}
}

// Effects remember what they hear, and would give such samples for ever.
void EffectStage::CheckInput(dsp::AudioBuffer& ioBlock, FrameRun const& inRun)
{
	auto const count = static_cast<unsigned>(inRun.mCount);
	for (unsigned channel = 0; channel < ioBlock.GetNumChannels(); ++channel)
	{
		float* const samples = ioBlock.IsChannelSilent(channel) ? nullptr : ioBlock.GetChannel(channel);
		if (!samples || zorvaccelerate::utility::AreFinite(count, samples))
		{
			continue;
		}
		auto const first = static_cast<std::int64_t>(FindNotFinite(samples, count));
		NoteFault(EffectFault::Kind::kBadInput, inRun.GetFrame(first));
		std::replace_if(
			samples, samples + count, [](float inSample) { return !std::isfinite(inSample); }, 0.0f);
	}
}

void EffectStage::NoteLatency()
{
	SN::TickTime const delay = mEffect->GetDelay();
	if (delay > mPlannedDelay && mTerms.mHealth)
	{
		SN::FrameRate const& frameRate = mTerms.mClock.GetFrameRate();
		mTerms.mHealth->mFoundLatency.store(delay.ToFrame64(frameRate), std::memory_order_relaxed);
	}
}

// What the effect had under way is silent.
void EffectStage::TakeFault(EffectFault::Kind inKind, std::int64_t inFrame, dsp::AudioBuffer& outBlock)
{
	outBlock.Zero();
	mHasFault = true;
	NoteFault(inKind, inFrame);
}

void EffectStage::NoteFault(EffectFault::Kind inKind, std::int64_t inFrame)
{
	if (mTerms.mHealth)
	{
		mTerms.mHealth->NoteFault(inKind, mTerms.mClock.ToCurveTime(inFrame));
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
	std::int64_t const frame = inRun.mFirst;
	// The remainder is never negative, also for frames below 0.
	std::int64_t first = frame - ((frame % kGrid) + kGrid) % kGrid;
	std::int64_t end = first + kGrid;
	auto const next = std::ranges::upper_bound(mTerms.mJumps, frame);
	first = next != mTerms.mJumps.begin() ? std::max(first, next[-1]) : first;
	end = next != mTerms.mJumps.end() ? std::min(end, *next) : end;
	mParameters->UpdateControls(mTerms.mClock.ToCurveTime(first));
	bool const moves = mParameters->GetNextInterestingTime(-SN::kTimeMax) != SN::kTimeMax;
	return moves ? std::min(largest, inRun.mStep > 0 ? end - frame : frame - first + 1) : largest;
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
