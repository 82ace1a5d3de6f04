#include "Time/Scaler/AudioTimeScalerFactory.h"

#include "AudioRender/Core/Module.h"
#include "Time/Scaler/AudioTimeScaler.h"

#include <utility>

namespace SN
{

namespace
{

// Made at the first use, which may be before the static objects of this library.
InterfaceRef<IAudioTimeScalerFactory>& CurrentTimeScalerFactory()
{
	static InterfaceRef<IAudioTimeScalerFactory> sFactory;
	return sFactory;
}

} // namespace

InterfaceRef<IAudioTimeScaler> AudioTimeScalerFactory::CreateAudioTimeScaler(RenderQuality)
{
	return zorvcore::classref::MakeObject<AudioTimeScaler>();
}

void AudioTimeScalerFactory::InstallDefault()
{
	CurrentTimeScalerFactory() = zorvcore::classref::MakeObject<AudioTimeScalerFactory>();
}

void AudioTimeScalerFactory::Uninstall()
{
	CurrentTimeScalerFactory().Reset();
}

InterfaceRef<IAudioTimeScalerFactory> GetAudioTimeScalerFactory()
{
	EnsureModule();
	return CurrentTimeScalerFactory();
}

void SetAudioTimeScalerFactory(InterfaceRef<IAudioTimeScalerFactory> inFactory)
{
	// So that a later start does not put its own in place of this one.
	EnsureModule();
	CurrentTimeScalerFactory() = std::move(inFactory);
}

} // namespace SN
