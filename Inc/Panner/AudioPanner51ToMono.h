#pragma once

#include "Panner/FixedMixPanner.h"
#include "Panner/PannerClass.h"

namespace SN
{

// Folds 5.1 to one channel, by the mixdown that was set when it was made.
class AudioPanner51ToMono final : public PannerClass<AudioPanner51ToMono, FixedMixPanner>
{
public:
	AudioPanner51ToMono()
		: PannerClass(u"AudioPanner51ToMono", VX::kAudioChannelType51, VX::kAudioChannelTypeMono)
	{
	}
};

} // namespace SN
