#pragma once

#include "zorvaudiodsp/AudioBuffer.h"

namespace dsp
{

// Makes samples agree with flags for a consumer that reads raw samples: writes zeros into the UseSize
// samples of every flagged channel. The flags stay.
ZORV_API void ZeroBufferAccordingToSilenceFlags(AudioBuffer& ioBuffer);

} // namespace dsp
