#include "MovieLayout.h"

#include "MovieInput.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>
#include <optional>
#include <string_view>

namespace SonaroHost
{

namespace
{

constexpr unsigned k51Channels = 6;

// The other orders in which QuickTime has 5.1, by the tags of its layouts.
struct TaggedOrder
{
	std::uint32_t mTag;
	std::array<AVChannel, k51Channels> mPlaces;
};

constexpr TaggedOrder kTaggedOrders[] = {
	{122u << 16 | k51Channels, {AV_CHAN_FRONT_LEFT, AV_CHAN_FRONT_RIGHT, AV_CHAN_SIDE_LEFT,
								   AV_CHAN_SIDE_RIGHT, AV_CHAN_FRONT_CENTER, AV_CHAN_LOW_FREQUENCY}},
	{123u << 16 | k51Channels, {AV_CHAN_FRONT_LEFT, AV_CHAN_FRONT_CENTER, AV_CHAN_FRONT_RIGHT,
								   AV_CHAN_SIDE_LEFT, AV_CHAN_SIDE_RIGHT, AV_CHAN_LOW_FREQUENCY}},
	{124u << 16 | k51Channels, {AV_CHAN_FRONT_CENTER, AV_CHAN_FRONT_LEFT, AV_CHAN_FRONT_RIGHT,
								   AV_CHAN_SIDE_LEFT, AV_CHAN_SIDE_RIGHT, AV_CHAN_LOW_FREQUENCY}},
};

// Decoders put the channels of their codecs in libav's order; those of PCM stay in the file's.
TaggedOrder const* FindTaggedOrder(AVCodecParameters const& inParameters, std::uint32_t inTag)
{
	bool const isPcm = std::string_view(Libav().avcodec_get_name(inParameters.codec_id)).starts_with("pcm_");
	auto const found = std::ranges::find(kTaggedOrders, inTag, &TaggedOrder::mTag);
	bool const isMeant = isPcm && inParameters.ch_layout.nb_channels == static_cast<int>(k51Channels);
	return isMeant && found != std::end(kTaggedOrders) ? found : nullptr;
}

// The channels' places one after the other.
std::vector<AVChannel> ListPlaces(MovieInput const& inInput, std::vector<unsigned> const& inStreams,
	std::vector<QuickTimeTrack> const& inTracks)
{
	std::vector<AVChannel> places;
	for (std::size_t i = 0; i < inStreams.size(); ++i)
	{
		AVCodecParameters const& parameters = *inInput.GetStream(inStreams[i]).codecpar;
		if (TaggedOrder const* const order = FindTaggedOrder(parameters, inTracks[i].mChannelTag))
		{
			places.insert(places.end(), order->mPlaces.begin(), order->mPlaces.end());
			continue;
		}
		for (unsigned channel = 0; channel < static_cast<unsigned>(parameters.ch_layout.nb_channels);
			 ++channel)
		{
			places.push_back(Libav().av_channel_layout_channel_from_index(&parameters.ch_layout, channel));
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

void SetMovieLayout(MovieInput const& inInput, std::vector<unsigned> const& inStreams,
	std::vector<QuickTimeTrack> const& inTracks, AudioFileInfo& outInfo)
{
	std::vector<AVChannel> const places = ListPlaces(inInput, inStreams, inTracks);
	auto const channels = static_cast<unsigned>(places.size());
	outInfo.mLayout = MakeLayoutOfChannels(channels);
	outInfo.mChannelOrder.resize(channels);
	std::iota(outInfo.mChannelOrder.begin(), outInfo.mChannelOrder.end(), 0u);
	if (channels != k51Channels)
	{
		return;
	}
	bool const isUnnamed = std::ranges::all_of(
		places, [](AVChannel inPlace) { return inPlace == AV_CHAN_NONE || inPlace == AV_CHAN_UNKNOWN; });
	auto const order = Find51Order(places);
	if (order || (isUnnamed && inStreams.size() == 1))
	{
		outInfo.mLayout = zorvmediatypes::Create51ChannelLayout();
		outInfo.mChannelOrder = order.value_or(outInfo.mChannelOrder);
	}
}

} // namespace SonaroHost
