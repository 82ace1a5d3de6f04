#include "MovieLayout.h"

#include "MovieInput.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>

namespace SonaroHost
{

namespace
{

constexpr unsigned k51Channels = 6;

// The channels' places one after the other.
std::vector<AVChannel> ListPlaces(MovieInput const& inInput, std::vector<unsigned> const& inStreams)
{
	std::vector<AVChannel> places;
	for (unsigned const stream : inStreams)
	{
		AVChannelLayout const& layout = inInput.GetStream(stream).codecpar->ch_layout;
		for (unsigned i = 0; i < static_cast<unsigned>(layout.nb_channels); ++i)
		{
			places.push_back(av_channel_layout_channel_from_index(&layout, i));
		}
	}
	return places;
}

// Where the engine's channels of 5.1 stand among the places. Nothing when one of them is not there.
std::optional<std::vector<unsigned>> Find51Order(std::vector<AVChannel> const& inPlaces)
{
	constexpr std::array<std::array<AVChannel, 2>, k51Channels> kWanted{{
		{AV_CHAN_FRONT_LEFT, AV_CHAN_FRONT_LEFT},
		{AV_CHAN_FRONT_RIGHT, AV_CHAN_FRONT_RIGHT},
		{AV_CHAN_FRONT_CENTER, AV_CHAN_FRONT_CENTER},
		{AV_CHAN_LOW_FREQUENCY, AV_CHAN_LOW_FREQUENCY},
		{AV_CHAN_SIDE_LEFT, AV_CHAN_BACK_LEFT},
		{AV_CHAN_SIDE_RIGHT, AV_CHAN_BACK_RIGHT},
	}};
	std::vector<unsigned> order;
	for (auto const& wanted : kWanted)
	{
		auto const found = std::find_first_of(inPlaces.begin(), inPlaces.end(), wanted.begin(), wanted.end());
		if (found == inPlaces.end())
		{
			return std::nullopt;
		}
		order.push_back(static_cast<unsigned>(found - inPlaces.begin()));
	}
	return order;
}

} // namespace

void SetMovieLayout(MovieInput const& inInput, std::vector<unsigned> const& inStreams, AudioFileInfo& outInfo)
{
	std::vector<AVChannel> const places = ListPlaces(inInput, inStreams);
	auto const channels = static_cast<unsigned>(places.size());
	outInfo.mLayout = MakeLayoutOfChannels(channels);
	outInfo.mChannelOrder.resize(channels);
	std::iota(outInfo.mChannelOrder.begin(), outInfo.mChannelOrder.end(), 0u);
	if (channels != k51Channels)
	{
		return;
	}
	bool const isUnnamed = std::all_of(places.begin(), places.end(),
		[](AVChannel inPlace) { return inPlace == AV_CHAN_NONE || inPlace == AV_CHAN_UNKNOWN; });
	auto const order = Find51Order(places);
	if (order || (isUnnamed && inStreams.size() == 1))
	{
		outInfo.mLayout = zorvmediatypes::Create51ChannelLayout();
		outInfo.mChannelOrder = order.value_or(outInfo.mChannelOrder);
	}
}

} // namespace SonaroHost
