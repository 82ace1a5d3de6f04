#include "Sonaro/AudioResamplerFactory.h"

#include "Time/Resampler/AudioResampler1to2Specialized.h"
#include "Time/Resampler/AudioResampler2to3Specialized.h"
#include "Time/Resampler/AudioResamplerCubic.h"
#include "Time/Resampler/AudioResamplerLinear.h"
#include "Time/Resampler/AudioResamplerSinc.h"

namespace SN::AudioResamplerFactory
{

namespace
{

constexpr double kHalf = 0.5;
constexpr double kTwoThirds = 0.6666666666666666;

double GetRatio(FrameRate const& inInputRate, FrameRate const& inOutputRate)
{
	return inInputRate.GetSamplesPerSecond() / inOutputRate.GetSamplesPerSecond();
}

template <class Resampler>
InterfaceRef<IAudioResamplerSpecialized> CreateAtRatio(unsigned inNumChannels)
{
	auto const resampler = zorvcore::classref::MakeObject<Resampler>();
	resampler->Init(inNumChannels);
	return resampler;
}

} // namespace

InterfaceRef<IAudioResampler> CreateAudioResampler(RenderQuality inQuality)
{
	using zorvcore::classref::MakeObject;
	switch (inQuality)
	{
	case RenderQuality::kDraft:
		return MakeObject<AudioResamplerLinear>();
	case RenderQuality::kLow:
	case RenderQuality::kMedium:
		return MakeObject<AudioResamplerCubic>();
	case RenderQuality::kHigh:
	case RenderQuality::kMaximum:
		return MakeObject<AudioResamplerSinc>();
	}
	return {};
}

bool IsSpecializedResamplerAvailable(FrameRate const& inInputRate, FrameRate const& inOutputRate)
{
	double const ratio = GetRatio(inInputRate, inOutputRate);
	return ratio == kTwoThirds || ratio == kHalf;
}

InterfaceRef<IAudioResamplerSpecialized> CreateSpecializedResampler(
	FrameRate const& inInputRate, FrameRate const& inOutputRate, unsigned inNumChannels)
{
	double const ratio = GetRatio(inInputRate, inOutputRate);
	return ratio == kTwoThirds ? CreateAtRatio<AudioResampler2to3Specialized>(inNumChannels)
		   : ratio == kHalf    ? CreateAtRatio<AudioResampler1to2Specialized>(inNumChannels)
							   : InterfaceRef<IAudioResamplerSpecialized>();
}

} // namespace SN::AudioResamplerFactory
