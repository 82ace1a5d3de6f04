#include "SonaroHost/Playback/SoundDevices.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Playback/FileDevice.h"
#include "SonaroHost/Playback/NullDevice.h"
#include "SystemDevices.h"

#include <algorithm>

namespace SonaroHost::Playback
{

namespace
{

constexpr char const* kFilePrefix = "file:";

std::string DescribeChoice(std::vector<SystemDevice> const& inDevices)
{
	std::string text;
	for (std::size_t index = 0; index < inDevices.size(); ++index)
	{
		text += (index == 0 ? "" : ", ") + std::to_string(index + 1) + " " +
				QuoteName(inDevices[index].mInfo.mName);
	}
	return text;
}

[[noreturn]] void RefuseDevice(std::string const& inReason, std::vector<SystemDevice> const& inDevices)
{
	if (DescribeSoundLibraries().empty())
	{
		RefuseOutput(inReason + ", since PortAudio was not built in with SONARO_WITH_PORTAUDIO, which needs "
								"portaudio19-dev; use null or file:PATH");
	}
	RefuseOutput(inReason + "; " +
				 (inDevices.empty() ? "there is none on this machine, so use null or file:PATH"
									: "there are " + DescribeChoice(inDevices)));
}

using Devices = std::vector<SystemDevice>;

// The only one; the end where there are several, or none.
template <class Is>
Devices::const_iterator FindOnly(Devices const& inDevices, Is const& inIs)
{
	return std::ranges::count_if(inDevices, inIs) == 1 ? std::ranges::find_if(inDevices, inIs)
													   : inDevices.end();
}

// The one that is meant; the end for none.
Devices::const_iterator FindDevice(Devices const& inDevices, std::string const& inName)
{
	auto found = std::ranges::find_if(inDevices, [&](SystemDevice const& inDevice)
		{ return inName.empty() ? inDevice.mInfo.mIsDefault : inDevice.mInfo.mName == inName; });
	auto const isNumbered = [&](SystemDevice const& inDevice)
	{ return inName == std::to_string(&inDevice - inDevices.data() + 1); };
	found = found == inDevices.end() ? FindOnly(inDevices, isNumbered) : found;
	auto const isDriven = [&](SystemDevice const& inDevice) { return inDevice.mInfo.mDriver == inName; };
	found = found == inDevices.end() ? FindOnly(inDevices, isDriven) : found;
	auto const isPart = [&](SystemDevice const& inDevice)
	{ return !inName.empty() && inDevice.mInfo.mName.find(inName) != std::string::npos; };
	return found == inDevices.end() ? FindOnly(inDevices, isPart) : found;
}

} // namespace

std::filesystem::path FindPlayedFile(std::string const& inName)
{
	return inName.rfind(kFilePrefix, 0) == 0 ? inName.substr(std::string(kFilePrefix).size()) : std::string();
}

std::unique_ptr<OutputDevice> MakeDevice(std::string const& inName)
{
	if (inName == "null")
	{
		return std::make_unique<NullDevice>();
	}
	if (inName.rfind(kFilePrefix, 0) == 0)
	{
		return std::make_unique<FileDevice>(FindPlayedFile(inName));
	}
	std::vector<SystemDevice> const devices = ListSystemDevices();
	auto const found = FindDevice(devices, inName);
	if (found == devices.end())
	{
		RefuseDevice(inName.empty() ? "there is no default sound device"
									: "there is no sound device " + QuoteName(inName) +
										  ", or its name is a part of several",
			devices);
	}
	return MakeSystemDevice(*found);
}

} // namespace SonaroHost::Playback
