#include "Time/Scaler/AudioTimeScaler.h"

#include "Time/Scaler/ScalerFrame.h"
#include "Time/Scaler/ScalerSampleCounts.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <new>
#include <utility>

namespace SN
{

namespace
{

constexpr double kMinRatio = 0.1;
constexpr double kMaxRatio = 10.0;

// Removes the elements of the first ioCount that inIsDone says.
template <class Elements, class IsDone>
void Drop(Elements& ioElements, unsigned& ioCount, IsDone const& inIsDone)
{
	auto const end = std::remove_if(ioElements.begin(), ioElements.begin() + ioCount, inIsDone);
	ioCount = static_cast<unsigned>(end - ioElements.begin());
}

} // namespace

AudioTimeScaler::AudioTimeScaler() = default;
AudioTimeScaler::~AudioTimeScaler() = default;

void AudioTimeScaler::Init(double inRatio, FrameRate const& inFrameRate, unsigned inNumChannels,
	double inPitchFactor, unsigned inFFTSize, unsigned inWindowMode)
{
	mIsOutOfRange = !(inRatio >= kMinRatio && inRatio <= kMaxRatio);
	if (mIsOutOfRange)
	{
		mNumChannels = inNumChannels;
		mIsInitialized = true;
		return;
	}
	Init({.mRatio = static_cast<float>(inRatio),
			 .mPitchFactor = static_cast<float>(inPitchFactor),
			 .mSampleRate = static_cast<float>(inFrameRate.GetSamplesPerSecond()),
			 .mFFTSize = inFFTSize,
			 .mWindowMode = inWindowMode},
		inNumChannels);
}

void AudioTimeScaler::Init(ScalerSettings const& inSettings, unsigned inNumChannels)
{
	mIsInitialized = false;
	mNumChannels = inNumChannels;
	auto const geometry = ScalerGeometry::Make(inSettings, mFrame ? mFrame->mGeometry.mWindowLength : 0);
	mFrame.reset();
	if (!geometry)
	{
		return;
	}
	try
	{
		mFrame = std::make_unique<ScalerFrame>(*geometry);
		for (unsigned channel = 0; channel < std::min(mNumChannels, kMostChannels); ++channel)
		{
			mStates[channel].Init(*mFrame);
		}
	}
	catch (std::bad_alloc const&)
	{
		Reset();
		return;
	}
	mIsInitialized = true;
	mIsFirstBlock = true;
}

void AudioTimeScaler::Reset()
{
	mStates = {};
	mFrame.reset();
	mIsInitialized = false;
	mIsFirstBlock = true;
	mIsOutOfRange = false;
}

unsigned AudioTimeScaler::GetOutputSampleCount(unsigned inNumInput)
{
	if (!mIsInitialized || mIsOutOfRange)
	{
		return mIsInitialized ? 1 : 0;
	}
	return ScalerSampleCounts::CountOutput(inNumInput, GetRatio(), std::exchange(mIsFirstBlock, false));
}

unsigned AudioTimeScaler::GetInputSampleCount(unsigned inNumOutput)
{
	if (!mIsInitialized || mIsOutOfRange)
	{
		return mIsInitialized ? inNumOutput : 0;
	}
	return ScalerSampleCounts::CountInput(
		inNumOutput, GetRatio(), std::exchange(mIsFirstBlock, false), mStates[0].GetSurplusCount());
}

unsigned AudioTimeScaler::GetMaxInputSampleCount(unsigned inNumOutput, double inRatio)
{
	return ScalerSampleCounts::CountMostInput(inNumOutput, inRatio == 0.0 ? GetRatio() : inRatio);
}

unsigned AudioTimeScaler::Process(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput, unsigned inNumOutput)
{
	if (!mIsInitialized || mIsOutOfRange || (inInput.IsSilent() && inNumInput != 0))
	{
		outOutput.Zero();
		return mIsInitialized ? inNumOutput : 0;
	}
	unsigned const numInput = std::min(inNumInput, inInput.GetCapacity());
	unsigned const numOutput = std::min(inNumOutput, outOutput.GetCapacity());
	auto const numChannels = static_cast<unsigned>(
		std::min<unsigned long long>({mNumChannels, kMostChannels, outOutput.GetNumChannels()}));
	auto const isHeard = [&](unsigned inChannel)
	{ return inNumInput == 0 || !inInput.IsChannelSilent(inChannel); };
	ActiveChannels active;
	for (unsigned channel = 0; channel < numChannels; ++channel)
	{
		ChannelState& state = mStates[channel];
		if (isHeard(channel) &&
			state.BeginBlock(inInput.GetChannel(channel), numInput, outOutput.GetChannel(channel), numOutput))
		{
			active.mStates[active.mCount++] = &state;
		}
	}
	while (active.mCount > 0)
	{
		MakeFrames(active);
	}
	unsigned written = 0;
	for (unsigned channel = 0; channel < outOutput.GetNumChannels(); ++channel)
	{
		if (channel < numChannels && isHeard(channel))
		{
			written = mStates[channel].EndBlock();
			outOutput.NoteChannelWrite(channel, numOutput);
		}
		else if (channel < mNumChannels)
		{
			outOutput.MarkChannelSilent(channel);
		}
	}
	return written;
}

void AudioTimeScaler::MakeFrames(ActiveChannels& ioActive)
{
	Drop(ioActive.mStates, ioActive.mCount, [](ChannelState* inState) { return !inState->Read(); });
	for (unsigned i = 0; i < ioActive.mCount; ++i)
	{
		ioActive.mStates[i]->MakeFrame(*mFrame);
	}
	UpdateStatistics(ioActive);
	Drop(ioActive.mStates, ioActive.mCount,
		[this](ChannelState* inState) { return !inState->GiveOut(*mFrame); });
}

void AudioTimeScaler::UpdateStatistics(ActiveChannels const& inActive) const
{
	using namespace zorvaccelerate::utility;
	std::array<MeansRun, kMostMeansRuns> runs;
	unsigned count = 0;
	for (unsigned i = 0; i < inActive.mCount; ++i)
	{
		for (MeansRun const& run : inActive.mStates[i]->GetRuns())
		{
			runs[count++] = run;
		}
		if (count == kMostMeansRuns || i + 1 == inActive.mCount)
		{
			UpdateMeans(count, runs.data());
			count = 0;
		}
	}
}

double AudioTimeScaler::GetMinRatio()
{
	return kMinRatio;
}

double AudioTimeScaler::GetMaxRatio()
{
	return kMaxRatio;
}

double AudioTimeScaler::GetRatio()
{
	return mFrame ? static_cast<double>(mFrame->mGeometry.mRatio) : 0.0;
}

} // namespace SN
