#include "Sonaro/AudioChannelMatrixMasks.h"

namespace SN
{

ChannelMask EnumerateInputChannels(AudioChannelMatrix const& inMatrix)
{
	ChannelMask mask;
	for (auto const& [input, outputs] : inMatrix)
	{
		mask.Set(input % ChannelMask::kCount);
	}
	return mask;
}

ChannelMask EnumerateOutputChannels(AudioChannelMatrix const& inMatrix)
{
	ChannelMask mask;
	for (auto const& [input, outputs] : inMatrix)
	{
		for (unsigned long long const output : outputs)
		{
			mask.Set(output % ChannelMask::kCount);
		}
	}
	return mask;
}

std::wstring AudioMatrixToString(AudioChannelMatrix const&)
{
	return {};
}

} // namespace SN
