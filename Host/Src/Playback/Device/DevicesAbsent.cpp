#include "SystemDevices.h"

namespace SonaroHost::Playback
{

std::string DescribeSoundLibraries()
{
	return {};
}

std::vector<SoundDeviceInfo> ListSoundDevices()
{
	return {};
}

std::vector<SystemDevice> ListSystemDevices()
{
	return {};
}

std::unique_ptr<OutputDevice> MakeSystemDevice(SystemDevice const&)
{
	return nullptr;
}

} // namespace SonaroHost::Playback
