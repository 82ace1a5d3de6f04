#include "Sonaro/AudioResamplerFactory.h"

#include "Time/Resampler/AudioResamplerCubic.h"
#include "Time/Resampler/AudioResamplerLinear.h"
#include "Time/Resampler/AudioResamplerSinc.h"

namespace SN::AudioResamplerFactory
{

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

} // namespace SN::AudioResamplerFactory
