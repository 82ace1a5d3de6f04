#include "SonaroHost/Base/ChannelLayouts.h"

#include "SonaroHost/Base/NumberText.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <system_error>
#include <utility>

namespace SonaroHost
{

namespace
{

using zorvmediatypes::AudioChannelDescription;
using zorvmediatypes::AudioChannelLayout;

// Null for a channel without a place.
char const* FindPlaceName(AudioChannelDescription inChannel)
{
	using Place = AudioChannelDescription;
	constexpr std::pair<Place, char const*> kNames[] = {{Place::kMono, "mono"}, {Place::kLeft, "left"},
		{Place::kRight, "right"}, {Place::kCenter, "centre"}, {Place::kLowFrequency, "LFE"},
		{Place::kLeftSurround, "left surround"}, {Place::kRightSurround, "right surround"},
		{Place::kLeftBack, "left back"}, {Place::kRightBack, "right back"}, {Place::kAmbisonicW, "W"},
		{Place::kAmbisonicY, "Y"}, {Place::kAmbisonicZ, "Z"}, {Place::kAmbisonicX, "X"}};
	auto const* const found = std::ranges::find(kNames, inChannel, &std::pair<Place, char const*>::first);
	return found == std::end(kNames) ? nullptr : found->second;
}

} // namespace

AudioChannelLayout MakeLayoutOfChannels(unsigned inChannels)
{
	return inChannels == 1   ? zorvmediatypes::CreateMonoChannelLayout()
		   : inChannels == 2 ? zorvmediatypes::CreateStereoChannelLayout()
							 : zorvmediatypes::CreateMultichannelLayout(static_cast<int>(inChannels));
}

std::optional<AudioChannelLayout> ParseLayout(std::string_view inText)
{
	for (AudioChannelLayout const& layout :
		{zorvmediatypes::CreateMonoChannelLayout(), zorvmediatypes::CreateStereoChannelLayout(),
			zorvmediatypes::Create51ChannelLayout(), zorvmediatypes::CreateAmbisonic1ChannelLayout()})
	{
		if (inText == GetLayoutName(layout))
		{
			return layout;
		}
	}
	unsigned count = 0;
	auto const [end, error] = std::from_chars(inText.data(), inText.data() + inText.size(), count);
	if (error != std::errc() || end != inText.data() + inText.size() || count < 1 || count > kMaxChannels)
	{
		return std::nullopt;
	}
	return zorvmediatypes::CreateMultichannelLayout(static_cast<int>(count));
}

std::string GetLayoutName(AudioChannelLayout const& inLayout)
{
	if (inLayout == zorvmediatypes::CreateMonoChannelLayout())
	{
		return "mono";
	}
	if (inLayout == zorvmediatypes::CreateStereoChannelLayout())
	{
		return "stereo";
	}
	if (inLayout == zorvmediatypes::Create51ChannelLayout())
	{
		return "5.1";
	}
	if (inLayout == zorvmediatypes::CreateAmbisonic1ChannelLayout())
	{
		return "ambisonic1";
	}
	return FormatCount(inLayout.size(), "channel");
}

bool HasPlaces(AudioChannelLayout const& inLayout)
{
	return std::ranges::all_of(
		inLayout, [](AudioChannelDescription inChannel) { return FindPlaceName(inChannel) != nullptr; });
}

std::vector<std::string> GetPlaceNames(AudioChannelLayout const& inLayout)
{
	std::vector<std::string> names;
	if (HasPlaces(inLayout))
	{
		std::transform(inLayout.begin(), inLayout.end(), std::back_inserter(names), FindPlaceName);
	}
	return names;
}

} // namespace SonaroHost
