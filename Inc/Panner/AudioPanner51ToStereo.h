#pragma once

#include "Panner/FixedMixPanner.h"
#include "Panner/PannerClass.h"

namespace SN
{

// Folds 5.1 to left and right, by the mixdown that was set when it was made.
class AudioPanner51ToStereo final : public PannerClass<AudioPanner51ToStereo, FixedMixPanner>
{
public:
	AudioPanner51ToStereo()
		: PannerClass(u"AudioPanner51ToStereo", VX::kAudioChannelType51, VX::kAudioChannelTypeStereo)
	{
	}
};

} // namespace SN
