#include "RenderOutput.h"

#include "zorvaccelerate/Metering.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace SonaroHost
{

RenderOutput::RenderOutput(Setup const& inSetup, RenderedFile inFile)
	: mSetup(inSetup),
	  mFile(std::move(inFile))
{
	auto const channels = static_cast<unsigned>(mSetup.mLayout.size());
	if (mSetup.mWrites)
	{
		mWriter.emplace(mFile.mPath, mSetup.mFormat, mSetup.mSampleRate, mSetup.mLayout, mFile.mRange.mFrames,
			mFile.mTimeReference);
	}
	if (mSetup.mMeasures && LoudnessMeter::CanMeasure(mSetup.mLayout, mSetup.mSampleRate))
	{
		mMeter.emplace(mSetup.mLayout, mSetup.mSampleRate, LoudnessMeter::Memory::kGrowing,
			mSetup.mKeepsSeries ? LoudnessMeter::Windows::kSeries : LoudnessMeter::Windows::kNone);
	}
	if (mSetup.mLimit)
	{
		mLimiter.emplace(channels, mSetup.mSampleRate, *mSetup.mLimit);
		mFramesToDrop = mLimiter->GetLatencyFrames();
	}
}

void RenderOutput::Add(dsp::AudioBuffer& ioBlock)
{
	if (!mFile.mFades.IsNone())
	{
		ApplyFades(ioBlock, mFile.mFades, mFramesAdded, mFile.mRange.mFrames);
	}
	mFramesAdded += ioBlock.GetUseSize();
	if (mSetup.mGain != 1.0f)
	{
		ioBlock *= mSetup.mGain;
	}
	Limit(ioBlock);
}

void RenderOutput::Limit(dsp::AudioBuffer& ioBlock)
{
	if (!mLimiter)
	{
		Write(ioBlock);
		return;
	}
	mLimiter->Process(ioBlock);
	std::int64_t const dropped = std::min<std::int64_t>(mFramesToDrop, ioBlock.GetUseSize());
	mFramesToDrop -= dropped;
	if (dropped == ioBlock.GetUseSize())
	{
		return;
	}
	dsp::AudioSubBuffer rest;
	rest.Init(ioBlock.GetNumChannels());
	rest.Assign(ioBlock, static_cast<unsigned>(dropped));
	Write(rest);
}

void RenderOutput::Write(dsp::AudioBuffer& ioBlock)
{
	if (mWriter)
	{
		mWriter->Write(ioBlock);
	}
	if (mMeter)
	{
		mMeter->Add(ioBlock);
		return;
	}
	for (unsigned channel = 0; channel < ioBlock.GetNumChannels(); ++channel)
	{
		if (!ioBlock.IsChannelSilent(channel))
		{
			FindPeak(ioBlock.GetChannel(channel), ioBlock.GetUseSize());
		}
	}
}

void RenderOutput::FindPeak(float const* inSamples, unsigned inFrames)
{
	using namespace zorvaccelerate::utility;
	mPlausible.resize(inFrames);
	float const largest = CopyPlausible(inFrames, inSamples, mPlausible.data());
	// A NaN fails this comparison, too.
	if (largest <= kLargestPlausible)
	{
		mFile.mPeak = std::max(mFile.mPeak, largest);
		return;
	}
	for (unsigned i = 0; i < inFrames; ++i)
	{
		float const magnitude = std::fabs(inSamples[i]);
		mFile.mPeak = std::isfinite(magnitude) ? std::max(mFile.mPeak, magnitude) : mFile.mPeak;
		mFile.mImplausibleSamples += magnitude <= kLargestPlausible ? 0 : 1;
	}
}

void RenderOutput::Complete()
{
	if (mLimiter)
	{
		// What the limiter still holds comes out once as many zeros have gone in.
		dsp::AudioBuffer silence(mSetup.mLayout.size(), static_cast<unsigned>(mLimiter->GetLatencyFrames()));
		silence.Zero();
		Limit(silence);
		mFile.mSmallestLimiterGain = mLimiter->GetSmallestGain();
	}
	if (mMeter)
	{
		mFile.mLoudness = mMeter->GetReadingAtEnd();
		mFile.mPeak = static_cast<float>(mFile.mLoudness->mPeak);
		mFile.mImplausibleSamples = mFile.mLoudness->mLeftOutSamples;
	}
	if (mWriter)
	{
		mWriter->Complete();
		mFile.mClippedSamples = mWriter->GetClippedSamples();
	}
}

void RenderOutput::Commit()
{
	mWriter->Finish(mSetup.mReplaces);
}

} // namespace SonaroHost
