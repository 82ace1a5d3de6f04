#pragma once

#include "SonaroHost/Playback/SoundDevices.h"

#include <memory>
#include <vector>

namespace SonaroHost::Playback
{

// A device as the library knows it that was built in.
struct SystemDevice
{
	int mIndex = 0;
	SoundDeviceInfo mInfo;
};

// In the order of the public list.
std::vector<SystemDevice> ListSystemDevices();

// One of the list.
std::unique_ptr<OutputDevice> MakeSystemDevice(SystemDevice const& inDevice);

} // namespace SonaroHost::Playback
