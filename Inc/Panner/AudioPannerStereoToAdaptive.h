#pragma once

#include "AudioRender/Core/StackAudioBufferTags.h"
#include "Panner/AdaptivePanner.h"
#include "Panner/PannerClass.h"

namespace SN
{

// Left and right on an adaptive track, by the routing as it is given.
class AudioPannerStereoToAdaptive final : public PannerClass<AudioPannerStereoToAdaptive, AdaptivePanner>
{
public:
	AudioPannerStereoToAdaptive()
		: PannerClass(u"AudioPannerStereoToAdaptive", VX::kAudioChannelTypeStereo, 1,
			  StackAudioBufferTags::kAudioPannerStereoToAdaptive)
	{
	}
};

} // namespace SN
