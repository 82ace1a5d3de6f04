#include "AudioRender/Core/SilentGenerator.h"

#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

void SilentGenerator::GetAudioData(TickTime const&, dsp::AudioBuffer& inBuffer, bool)
{
	inBuffer.Zero();
}

} // namespace SN
