#include "Time/Stretch/TimeStretchedAudioGenerator.h"

#include "AudioRender/Source/AudioGeneratorContentSpeedAdapter.h"
#include "AudioRender/Source/PrefetchedAudioGenerator.h"
#include "Sonaro/GeneratorPrefetch.h"
#include "Sonaro/PrefetchRange.h"
#include "zorvaudiodsp/ZeroBufferAccordingToSilenceFlags.h"
#include "zorvcore/config/Exceptions.h"
#include "zorvcore/debug/TypeName.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace SN
{

namespace
{

using zorvcore::threads::ScopedRecursiveLock;

// The pitch that follows a ratio, as on a tape.
float ToSemitones(float inRatio)
{
	return 12.0f * zorvcore::math::Log(1.0f / inRatio) / zorvcore::math::Log(2.0f);
}

} // namespace

int TimeStretchedAudioGenerator::Create(
	TimeStretchSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator)
{
	if (!inSettings.mRenderContext)
	{
		return eNullPointer;
	}
	if (!inSettings.mTimeTransform)
	{
		zorvcore::config::DoThrowNullPtrException(
			zorvcore::debug::GetTypeName(typeid(TimeStretchedAudioGenerator)));
	}
	auto const stretched = zorvcore::classref::MakeAsyncDestroyedObject<TimeStretchedAudioGenerator>();
	int const result = stretched->Init(inSettings);
	if (ResultSucceeded(result))
	{
		*outGenerator = stretched;
	}
	return result;
}

int TimeStretchedAudioGenerator::CreateWithPrefetch(TimeStretchSettings const& inSettings, double inSpeed,
	InterfaceRef<IAudioRenderContext> const& inPrefetchContext, TickTime const& inEndTime,
	InterfaceRef<IAudioGenerator>* outGenerator)
{
	TimeStretchSettings settings = inSettings;
	if (inSpeed != 1.0)
	{
		int const result = AudioGeneratorContentSpeedAdapter::Create(
			inSettings.mGenerator, 1.0 / inSpeed, &settings.mGenerator);
		if (!ResultSucceeded(result))
		{
			return result;
		}
	}
	InterfaceRef<IAudioGenerator> stretched;
	int const result = Create(settings, &stretched);
	if (!ResultSucceeded(result))
	{
		return result;
	}
	return PrefetchedAudioGenerator::Create(
		stretched, inPrefetchContext, settings.mSourceOffset, inEndTime, *outGenerator);
}

TimeStretchedAudioGenerator::~TimeStretchedAudioGenerator()
{
	if (mIsEngineStarted)
	{
		mEngine->End();
	}
}

int TimeStretchedAudioGenerator::Init(TimeStretchSettings const& inSettings)
{
	AudioGeneratorDecorator::Init(inSettings.mGenerator);
	mSettings = inSettings;
	// Held by the base.
	mSettings.mGenerator = {};
	return SetUpEngine();
}

int TimeStretchedAudioGenerator::SetUpEngine()
{
	mBlockSize = mSettings.mRenderContext->GetMaxBlockSize();
	mSampleRate = AudioGeneratorDecorator::GetGeneratorFrameRate();
	unsigned const numChannels = AudioGeneratorDecorator::GetNumChannels();
	auto const rate = static_cast<float>(mSettings.mFrameRate.GetSamplesPerSecond());
	OmegaEngine* engine = nullptr;
	int const result = OmegaEngine::Create(&engine, rate, numChannels, mBlockSize, 0.0f, mSettings.mMinRatio,
		mSettings.mMaxRatio, ToSemitones(mSettings.mMaxRatio), ToSemitones(mSettings.mMinRatio));
	if (!ResultSucceeded(result))
	{
		return result;
	}
	mEngine.reset(engine);
	mStreamSettings = {static_cast<unsigned char>(mSettings.mPreferAccuracy), 37.0f, 1.0f};
	mMaxInputPerBlock = mEngine->GetInputForBlock(mBlockSize, mSettings.mMinRatio);
	mStartupSamples = mMaxInputPerBlock;
	mEngine->Begin(rate, &mStreamSettings, std::max(CountRemaining(mSourcePosition), mMaxInputPerBlock));
	mIsEngineStarted = true;
	mRing.Init(numChannels, 2 * (mMaxInputPerBlock + mBlockSize));
	mInputScratch.assign(static_cast<std::size_t>(mMaxInputPerBlock) * numChannels, 0.0f);
	mSpareOutput.assign(mBlockSize, 0.0f);
	mInputPointers.clear();
	for (std::size_t channel = 0; channel < numChannels; ++channel)
	{
		mInputPointers.push_back(mInputScratch.data() + channel * mMaxInputPerBlock);
	}
	mOutputPointers.resize(numChannels);
	mBlock.Init(numChannels, mBlockSize);
	mSourcePosition = -kTimeMax;
	return kSuccess;
}

InterfaceRef<IAudioGenerator> TimeStretchedAudioGenerator::Clone()
{
	auto const clone = zorvcore::classref::MakeAsyncDestroyedObject<TimeStretchedAudioGenerator>();
	TimeStretchSettings settings = mSettings;
	settings.mGenerator = GetGenerator()->Clone();
	clone->mSourcePosition = mSourcePosition;
	clone->mExpectedTime = mExpectedTime;
	clone->Init(settings);
	return clone;
}

TickTime TimeStretchedAudioGenerator::GetDelay()
{
	return mSettings.mRenderContext->IsDelayCompensationDisabled() ? kTimeZero : mInitialDelay;
}

void TimeStretchedAudioGenerator::Reset()
{
	ScopedRecursiveLock const lock(mMutex, "SN::TimeStretchedAudioGenerator::Reset");
	AudioGeneratorDecorator::Reset();
}

TickTime TimeStretchedAudioGenerator::MapTime(TickTime const& inTime) const
{
	return inTime > kTimeZero ? mSettings.mTimeTransform->GetTime(inTime) : kTimeZero;
}

unsigned TimeStretchedAudioGenerator::CountRemaining(TickTime const& inTime) const
{
	long long const count = (mSettings.mSourceEndTime - inTime).ToFrame64(mSampleRate);
	return static_cast<unsigned>(std::clamp<long long>(count, 0, std::numeric_limits<unsigned>::max()));
}

unsigned TimeStretchedAudioGenerator::CountReadAhead(TickTime const& inTime) const
{
	return std::min(CountRemaining(inTime), mMaxInputPerBlock);
}

TickTime TimeStretchedAudioGenerator::ToDuration(unsigned inSamples) const
{
	return {static_cast<long long>(inSamples), mSampleRate};
}

void TimeStretchedAudioGenerator::Preroll(TickTime const& inStartTime, bool inReverse)
{
	ScopedRecursiveLock const lock(mMutex, "SN::TimeStretchedAudioGenerator::Preroll");
	AudioGeneratorDecorator::Preroll(inStartTime, inReverse);
	TickTime const time = inStartTime + mSettings.mSourceOffset;
	mRatioConverter = std::make_shared<TimeTransformToRatioConverter>(
		mSettings.mTimeTransform, mSettings.mMinRatio, mSettings.mMaxRatio);
	mRatioConverter->Seek(time);
	mSourcePosition = MapTime(time);
	mInitialDelay = ToDuration(CountReadAhead(mSourcePosition));
	FillRing(time, inReverse, false);
}

void TimeStretchedAudioGenerator::FillRing(TickTime const& inTime, bool inReverse, bool inWithDelay)
{
	mRing.Clear();
	mSourcePosition = MapTime(inTime);
	unsigned left = CountReadAhead(mSourcePosition);
	mEngine->SetSourceRemaining(left);
	mExpectedTime = inTime;
	if (!mSettings.mRenderContext->IsPrefetchEnabled())
	{
		mFilledSamples = 0;
		if (inWithDelay)
		{
			FillInitialDelay(inTime, mInitialDelay, inReverse, true);
		}
		return;
	}
	while (left > 0)
	{
		unsigned const count = std::min(left, mBlockSize);
		TickTime const start = mSourcePosition - mSettings.mSourceOffset;
		PrefetchFromAudioGenerator(
			GetGenerator(), {start, start + ToDuration(count)}, SynchronousPrefetch, 0);
		ReadSource(mBlock, count, inReverse);
		if (mRing.GetRoom() <= count)
		{
			return;
		}
		mRing.Write(mBlock, count);
		mSourcePosition += ToDuration(count);
		left -= count;
	}
}

void TimeStretchedAudioGenerator::FillInitialDelay(
	TickTime const&, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	ScopedRecursiveLock const lock(mMutex, "SN::TimeStretchedAudioGenerator::FillInitialDelay");
	auto const countIn = [this](TickTime const& inTime)
	{ return static_cast<unsigned>(std::max(inTime.ToFrame32(mSampleRate), 0)); };
	unsigned limit = countIn(mInitialDelay);
	if (mFilledSamples >= limit)
	{
		return;
	}
	limit = inForceCompletion ? limit : countIn(inDelayTime);
	unsigned left = std::min(CountReadAhead(mSourcePosition), limit - std::min(limit, mFilledSamples));
	mFilledSamples += left;
	while (left > 0)
	{
		unsigned const count = std::min(left, mBlockSize);
		TickTime const duration = inReverse ? -ToDuration(count) : ToDuration(count);
		if (inForceCompletion)
		{
			TickTime const end = mSourcePosition + duration;
			PrefetchRange const range(std::min(mSourcePosition, end), std::max(mSourcePosition, end));
			PrefetchFromAudioGenerator(GetGenerator(), range, SynchronousPrefetch, 0);
		}
		ReadSource(mBlock, count, inReverse);
		if (mRing.GetRoom() <= count)
		{
			return;
		}
		mRing.Write(mBlock, count);
		mSourcePosition += duration;
		left -= count;
	}
}

// The samples at the source's position, with zeros where flags say silence.
void TimeStretchedAudioGenerator::ReadSource(dsp::AudioBuffer& ioBuffer, unsigned inCount, bool inReverse)
{
	ioBuffer.SetUseSize(inCount);
	ioBuffer.Zero();
	AudioGeneratorDecorator::GetAudioData(mSourcePosition - mSettings.mSourceOffset, ioBuffer, inReverse);
	dsp::ZeroBufferAccordingToSilenceFlags(ioBuffer);
}

void TimeStretchedAudioGenerator::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	ScopedRecursiveLock const lock(mMutex, "SN::TimeStretchedAudioGenerator::AccumulatePrefetchRequests");
	TickTime const start = MapTime(inRange.mStart);
	TickTime const end = std::max(MapTime(inRange.mEnd), start + ToDuration(mStartupSamples));
	AudioGeneratorDecorator::AccumulatePrefetchRequests({start, end}, inType, inAccumulator);
}

void TimeStretchedAudioGenerator::GetAudioData(
	TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse)
{
	ScopedRecursiveLock const lock(mMutex, "SN::TimeStretchedAudioGenerator::GetAudioData");
	unsigned const wanted = inBuffer.GetUseSize();
	// Without a preroll, the first pull is a jump as well.
	if (inTime != mExpectedTime || !mRatioConverter)
	{
		Jump(inTime, inReverse);
	}
	TickTime const duration = ToDuration(wanted);
	mExpectedTime = inReverse ? inTime - duration : inTime + duration;
	SetEngineFor(wanted);
	unsigned const numOutput = std::min(wanted, mEngine->GetOutputLimit());
	unsigned const needed = numOutput > 0 ? mEngine->GetInputNeeded(numOutput) : 0;
	if (numOutput == 0 || !PullSource(inBuffer, needed, inReverse))
	{
		inBuffer.SetUseSize(wanted);
		inBuffer.Zero();
		return;
	}
	inBuffer.SetUseSize(wanted);
	RunEngine(inBuffer, numOutput, needed);
}

void TimeStretchedAudioGenerator::Jump(TickTime const& inTime, bool inReverse)
{
	if (!mRatioConverter)
	{
		mRatioConverter = std::make_shared<TimeTransformToRatioConverter>(
			mSettings.mTimeTransform, mSettings.mMinRatio, mSettings.mMaxRatio);
	}
	mSourcePosition = MapTime(inTime);
	mRatioConverter->Seek(inTime);
	mEngine->SetSourceRemaining(CountReadAhead(mSourcePosition));
	FillRing(inTime, inReverse, true);
}

void TimeStretchedAudioGenerator::SetEngineFor(unsigned inNumSamples)
{
	float const ratio = mRatioConverter->GetRatio(ToDuration(inNumSamples));
	mEngine->SetRatio(ratio, ratio);
	if (!mSettings.mMaintainPitch)
	{
		float const semitones = ToSemitones(ratio);
		mEngine->SetPitch(semitones, semitones);
	}
}

bool TimeStretchedAudioGenerator::PullSource(dsp::AudioBuffer& ioBuffer, unsigned inNeeded, bool inReverse)
{
	unsigned const piece = std::min(ioBuffer.GetUseSize(), mBlockSize);
	if (inNeeded > mMaxInputPerBlock)
	{
		return false;
	}
	while (mRing.GetFilled() < inNeeded)
	{
		unsigned const count = std::min(inNeeded - mRing.GetFilled(), piece);
		if (count > mRing.GetRoom())
		{
			return false;
		}
		ReadSource(ioBuffer, count, inReverse);
		mRing.Write(ioBuffer, count);
		mSourcePosition += inReverse ? -ToDuration(count) : ToDuration(count);
	}
	return true;
}

void TimeStretchedAudioGenerator::RunEngine(
	dsp::AudioBuffer& ioBuffer, unsigned inNumOutput, unsigned inNeeded)
{
	unsigned const wanted = ioBuffer.GetUseSize();
	unsigned const numChannels = mRing.GetNumChannels();
	mRing.Read(numChannels, inNeeded, mInputPointers.data());
	for (unsigned channel = 0; channel < numChannels; ++channel)
	{
		float* const samples = ioBuffer.GetChannel(channel);
		mOutputPointers[channel] = samples ? samples : mSpareOutput.data();
	}
	mEngine->Process(inNumOutput, mInputPointers.data(), mOutputPointers.data());
	for (unsigned channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		if (channel >= numChannels)
		{
			ioBuffer.MarkChannelSilent(channel);
			continue;
		}
		float* const samples = ioBuffer.GetChannel(channel);
		std::fill(samples + inNumOutput, samples + wanted, 0.0f);
		ioBuffer.NoteChannelWrite(channel, wanted);
	}
}

} // namespace SN
