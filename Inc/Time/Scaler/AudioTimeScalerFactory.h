#pragma once

#include "Sonaro/IAudioTimeScalerFactory.h"

namespace SN
{

// Makes phase vocoders.
class AudioTimeScalerFactory final : public Implements<AudioTimeScalerFactory, IAudioTimeScalerFactory>
{
public:
	InterfaceRef<IAudioTimeScaler> CreateAudioTimeScaler(RenderQuality inQuality) override;

	// Of the module's start and stop, which the public functions rely on.
	static void InstallDefault();
	static void Uninstall();
};

} // namespace SN
