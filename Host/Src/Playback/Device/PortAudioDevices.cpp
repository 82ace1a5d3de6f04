#include "PortAudioDevice.h"
#include "SystemDevices.h"

#include <portaudio.h>

namespace SonaroHost::Playback
{

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
			devices.push_back(
				{index, {info.name, driver ? driver->name : "", static_cast<unsigned>(info.maxOutputChannels),
							info.defaultSampleRate, index == Pa_GetDefaultOutputDevice()}});
		}
	}
	return devices;
}

std::unique_ptr<OutputDevice> MakeSystemDevice(SystemDevice const& inDevice)
{
	return std::make_unique<PortAudioDevice>(inDevice.mIndex, inDevice.mInfo.mName);
}

} // namespace SonaroHost::Playback
