#pragma once

#include "Sonaro/IAudioPanProcessor.h"

#include <algorithm>

namespace SN
{

// How many channels a buffer needs that holds what goes into a pan processor and what comes out: its
// outputs where any width may come out of a fixed input, else the larger of both.
inline unsigned GetPanWorkingWidth(IAudioPanProcessor& inPanner)
{
	bool const widens = inPanner.GetInputChannelType() != VX::kAudioChannelTypeAny &&
						inPanner.GetOutputChannelType() == VX::kAudioChannelTypeAny;
	unsigned const outputs = inPanner.GetNumOutputChannels();
	return widens ? outputs : std::max(inPanner.GetNumInputChannels(), outputs);
}

} // namespace SN
