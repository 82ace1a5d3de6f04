#include "Sonaro/AudioBinauralizerFactory.h"

#include "Panner/Binaural/AudioBinauralizer.h"

namespace SN::AudioBinauralizerFactory
{

InterfaceRef<IAudioBinauralizer> CreateAudioBinauralizer()
{
	return zorvcore::classref::MakeObject<AudioBinauralizer>();
}

} // namespace SN::AudioBinauralizerFactory
