#include "OmegaStretcher.h"

#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace SonaroHost
{

namespace omega = dsp::stretch::omega;

namespace
{

constexpr unsigned kStretchedFrames = 1024;

omega::OmegaEngine* MakeEngine(omega::OmegaEngineKind inKind, OmegaStretcher::Limits const& inLimits,
	unsigned inChannels, int inSampleRate)
{
	omega::OmegaEngine* engine = nullptr;
	omega::OmegaEngine::CreateOfKind(&engine, inKind, static_cast<float>(inSampleRate), inChannels,
		inLimits.mBlockFrames, {inLimits.mLowestRatio, inLimits.mHighestRatio, 0.0f, 0.0f});
	return engine;
}

} // namespace

OmegaStretcher::OmegaStretcher(
	omega::OmegaEngineKind inKind, Ratio const& inRatio, unsigned inChannels, int inSampleRate)
	: OmegaStretcher(inKind,
		  {static_cast<float>(inRatio.ToDouble()), static_cast<float>(inRatio.ToDouble()), kStretchedFrames},
		  inChannels, inSampleRate)
{
}

OmegaStretcher::OmegaStretcher(
	omega::OmegaEngineKind inKind, Limits const& inLimits, unsigned inChannels, int inSampleRate)
	: mEngine(MakeEngine(inKind, inLimits, inChannels, inSampleRate)),
	  mLimits(inLimits),
	  mRoundedRatio(inLimits.mLowestRatio)
{
	if (!mEngine)
	{
		Refuse("sound at " + std::to_string(inSampleRate) + " Hz with " + std::to_string(inChannels) +
			   " channels cannot be stretched; use another engine");
	}
	omega::StreamSettings settings;
	settings.mPreferAccuracy = 1;
	mEngine->Begin(static_cast<float>(inSampleRate), &settings, std::numeric_limits<unsigned>::max());
	mEngine->SetRatio(mRoundedRatio, mRoundedRatio);
}

Ratio OmegaStretcher::GetRatio() const
{
	// A float of the range has no finer part.
	constexpr int kBits = 28;
	return {std::llround(std::ldexp(static_cast<double>(mRoundedRatio), kBits)), std::int64_t{1} << kBits};
}

double OmegaStretcher::SetRatio(double inRatio)
{
	mRoundedRatio = std::clamp(static_cast<float>(inRatio), mLimits.mLowestRatio, mLimits.mHighestRatio);
	mEngine->SetRatio(mRoundedRatio, mRoundedRatio);
	return static_cast<double>(mRoundedRatio);
}

unsigned OmegaStretcher::GetLargestInput() const
{
	return mEngine->GetInputForBlock(mLimits.mBlockFrames, mLimits.mLowestRatio);
}

unsigned OmegaStretcher::GetOutput() const
{
	return std::min(mLimits.mBlockFrames, mEngine->GetOutputLimit());
}

unsigned OmegaStretcher::GetInputNeeded() const
{
	return mEngine->GetInputNeeded(GetOutput());
}

unsigned OmegaStretcher::Process(dsp::AudioBuffer& ioInput, dsp::AudioBuffer& outOutput)
{
	unsigned const count = GetOutput();
	mEngine->Process(count, ioInput.GetChannels(), outOutput.GetChannels());
	mEngine->SetRatio(mRoundedRatio, mRoundedRatio);
	return count;
}

} // namespace SonaroHost
