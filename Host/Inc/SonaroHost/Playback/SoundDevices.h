#pragma once

#include "SonaroHost/Playback/OutputDevice.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Playback
{

// A device of the system that sound can go to.
struct SoundDeviceInfo
{
	std::string mName;
	// What drives it, such as "ALSA", "JACK" or "PulseAudio, by ALSA".
	std::string mDriver;
	// The most that it plays.
	unsigned mChannels = 0;
	// What it runs at by itself, in Hz.
	double mSampleRate = 0.0;
	bool mIsDefault = false;
};

// What sound cards and servers are reached by, such as "PortAudio V19.6.0"; empty when that was not built in.
std::string DescribeSoundLibraries();

// The devices of the system; none where nothing was built in that could reach them. Threads: one at a time.
std::vector<SoundDeviceInfo> ListSoundDevices();

// A device by its name: one of the system by its whole name, by its number in the list from 1 on, or by its driver,
// where that has one only, or by a part of its name that no other one has; the default one for an empty name. "null" is a NullDevice, and "file:PATH" a FileDevice,
// both at the speed of real time. Throws a HostError that lists what there is.
std::unique_ptr<OutputDevice> MakeDevice(std::string const& inName);

// The file that the device of that name writes; empty for the others.
std::filesystem::path FindPlayedFile(std::string const& inName);

} // namespace SonaroHost::Playback
