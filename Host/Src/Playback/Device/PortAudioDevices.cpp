#include "PortAudioDevice.h"
#include "SystemDevices.h"

#include <portaudio.h>

#include <string_view>
#include <utility>

namespace SonaroHost::Playback
{

namespace
{

// ALSA also reaches sound servers, by devices that are named after them.
std::string DescribeDriver(std::string_view inDriver, std::string_view inDevice)
{
	constexpr std::string_view kJack = "JACK Audio Connection Kit";
	constexpr std::pair<std::string_view, char const*> kServers[] = {
		{"pulse", "PulseAudio, by ALSA"}, {"pipewire", "PipeWire, by ALSA"}, {"jack", "JACK, by ALSA"}};
	for (auto const& [name, driver] : kServers)
	{
		if (inDriver == "ALSA" && inDevice == name)
		{
			return driver;
		}
	}
	return inDriver == kJack ? "JACK" : std::string(inDriver);
}

} // namespace

std::string DescribeSoundLibraries()
{
	std::string const text = Pa_GetVersionInfo()->versionText;
	return text.substr(0, text.find(','));
}

std::vector<SoundDeviceInfo> ListSoundDevices()
{
	PortAudioLibrary const library;
	std::vector<SoundDeviceInfo> devices;
	for (SystemDevice const& device : ListSystemDevices())
	{
		devices.push_back(device.mInfo);
	}
	return devices;
}

std::vector<SystemDevice> ListSystemDevices()
{
	PortAudioLibrary const library;
	std::vector<SystemDevice> devices;
	for (int index = 0; index < Pa_GetDeviceCount(); ++index)
	{
		PaDeviceInfo const& info = *Pa_GetDeviceInfo(index);
		if (info.maxOutputChannels > 0)
		{
			PaHostApiInfo const* const driver = Pa_GetHostApiInfo(info.hostApi);
			devices.push_back({index, {info.name, DescribeDriver(driver ? driver->name : "", info.name),
										  static_cast<unsigned>(info.maxOutputChannels),
										  info.defaultSampleRate, index == Pa_GetDefaultOutputDevice()}});
		}
	}
	return devices;
}

std::unique_ptr<OutputDevice> MakeSystemDevice(SystemDevice const& inDevice)
{
	return std::make_unique<PortAudioDevice>(inDevice);
}

} // namespace SonaroHost::Playback
