#include "OmegaStretcher.h"

#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <mutex>

namespace SonaroHost
{

namespace omega = dsp::stretch::omega;

namespace
{

// What the process makes engines of is one choice for all.
omega::OmegaEngine* MakeEngine(omega::OmegaEngineKind inKind, float inRatio, unsigned inChannels,
	int inSampleRate, unsigned inBlockFrames)
{
	static std::mutex sChoosing;
	std::scoped_lock const lock(sChoosing);
	omega::OmegaEngineKind const before = omega::GetOmegaEngineKind();
	omega::SetOmegaEngineKind(inKind);
	omega::OmegaEngine* engine = nullptr;
	omega::OmegaEngine::Create(&engine, static_cast<float>(inSampleRate), inChannels, inBlockFrames, 0.0f,
		inRatio, inRatio, 0.0f, 0.0f);
	omega::SetOmegaEngineKind(before);
	return engine;
}

} // namespace

OmegaStretcher::OmegaStretcher(
	omega::OmegaEngineKind inKind, Ratio const& inRatio, unsigned inChannels, int inSampleRate)
	: mRoundedRatio(static_cast<float>(inRatio.ToDouble()))
{
	// A float of the range has no finer part.
	constexpr int kBits = 28;
	mRatio =
		Ratio(std::llround(std::ldexp(static_cast<double>(mRoundedRatio), kBits)), std::int64_t{1} << kBits);
	mEngine.reset(MakeEngine(inKind, mRoundedRatio, inChannels, inSampleRate, kBlockFrames));
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

unsigned OmegaStretcher::GetLargestInput() const
{
	return mEngine->GetInputForBlock(kBlockFrames, mRoundedRatio);
}

unsigned OmegaStretcher::GetOutput() const
{
	return std::min(kBlockFrames, mEngine->GetOutputLimit());
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
