#pragma once

#include "Panner/FixedMixPanner.h"

namespace SN
{

// Folds 5.1 to left and right, by the mixdown that was set when it was made.
class AudioPanner51ToStereo final : public FixedMixPanner
{
public:
	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioPanProcessor>* outProcessor);

	AudioPanner51ToStereo();

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
};

} // namespace SN
