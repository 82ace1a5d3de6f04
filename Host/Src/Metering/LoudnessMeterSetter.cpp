#include "SonaroHost/Metering/LoudnessMeterSetter.h"

#include "SonaroHost/Base/HostError.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <string>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr double kSecondsPerReading = 0.1;

constexpr double LoudnessReading::*kMembers[] = {&LoudnessReading::mPeak, &LoudnessReading::mTruePeak,
	&LoudnessReading::mRMS, &LoudnessReading::mMomentary, &LoudnessReading::mShortTerm,
	&LoudnessReading::mIntegrated};

} // namespace

LoudnessMeterSetter::LoudnessMeterSetter(SN::AudioChannelLayout inLayout)
	: mLayout(std::move(inLayout))
{
	Publish({});
}

void LoudnessMeterSetter::Init(SN::FrameRate const& inFrameRate, unsigned inChannels)
{
	if (inChannels != mLayout.size())
	{
		Refuse("a meter of " + std::to_string(mLayout.size()) + " channels cannot measure " +
			   std::to_string(inChannels));
	}
	Shutdown();
	mSampleRate = inFrameRate.GetSamplesPerSecond();
	mMeter = MakeMeter();
	mSpare = MakeMeter();
	mIsSpareFresh.store(true, std::memory_order_release);
}

void LoudnessMeterSetter::SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const&)
{
	if (!mMeter || (mNeedsSpare && !TakeSpare()))
	{
		return;
	}
	mMeter->Add(inBuffer);
	mHasHeard = true;
	unsigned const frames = inBuffer.GetUseSize();
	if (frames < mFramesToReading)
	{
		mFramesToReading -= frames;
		return;
	}
	mFramesToReading = static_cast<unsigned>(mSampleRate * kSecondsPerReading);
	Publish(mMeter->GetReading());
}

void LoudnessMeterSetter::Shutdown()
{
	mIsSpareFresh.store(false, std::memory_order_relaxed);
	mSpare.reset();
	mMeter.reset();
	mHasHeard = false;
	mNeedsSpare = false;
	mFramesToReading = 0;
	Publish({});
}

void LoudnessMeterSetter::Reset()
{
	Publish({});
	mNeedsSpare = mNeedsSpare || mHasHeard;
	if (mNeedsSpare)
	{
		TakeSpare();
	}
}

LoudnessReading LoudnessMeterSetter::GetReading()
{
	if (mSampleRate > 0.0 && !mIsSpareFresh.load(std::memory_order_acquire))
	{
		mSpare = MakeMeter();
		mIsSpareFresh.store(true, std::memory_order_release);
	}
	LoudnessReading reading;
	for (std::size_t i = 0; i < kNumValues; ++i)
	{
		reading.*kMembers[i] = mValues[i].load(std::memory_order_relaxed);
	}
	return reading;
}

void LoudnessMeterSetter::Publish(LoudnessReading const& inReading)
{
	for (std::size_t i = 0; i < kNumValues; ++i)
	{
		mValues[i].store(inReading.*kMembers[i], std::memory_order_relaxed);
	}
}

bool LoudnessMeterSetter::TakeSpare()
{
	if (!mIsSpareFresh.load(std::memory_order_acquire))
	{
		return false;
	}
	std::swap(mMeter, mSpare);
	mIsSpareFresh.store(false, std::memory_order_release);
	mHasHeard = false;
	mNeedsSpare = false;
	mFramesToReading = 0;
	return true;
}

std::unique_ptr<LoudnessMeter> LoudnessMeterSetter::MakeMeter() const
{
	return std::make_unique<LoudnessMeter>(mLayout, mSampleRate, LoudnessMeter::Memory::kFixed);
}

} // namespace SonaroHost
