#include "SonaroHost/Binaural/Listener.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "zorvmediatypes/AudioChannelLayout.h"
#include "zorvmediatypes/ChannelConversionMatrix.h"

#include <string>

namespace SonaroHost
{

namespace
{

// The range of the renderer.
constexpr int kLowestEarRate = 1000;
constexpr int kHighestEarRate = 768000;

} // namespace

FieldMatrix FindField(SN::AudioChannelLayout const& inLayout)
{
	constexpr int k71Channels = 8;
	bool const is71 = inLayout == zorvmediatypes::CreateMultichannelLayout(k71Channels);
	if (inLayout.empty() || (!is71 && !HasPlaces(inLayout)))
	{
		return {};
	}
	zorvmediatypes::ChannelConversionMatrix matrix;
	zorvmediatypes::ComputeChannelConversionMatrix(is71 ? zorvmediatypes::Create71ChannelLayout() : inLayout,
		zorvmediatypes::CreateAmbisonic1ChannelLayout(), matrix);
	FieldMatrix field;
	for (std::vector<double> const& row : matrix)
	{
		field.emplace_back(row.begin(), row.end());
	}
	return field;
}

void CheckCanListen(SN::AudioChannelLayout const& inLayout, int inSampleRate)
{
	if (FindField(inLayout).empty())
	{
		Refuse("sound of " + GetLayoutName(inLayout) +
			   " cannot be rendered for two ears, since its channels have no places around the listener; use "
			   "--layout with mono, stereo, 5.1, ambisonic1 or, for 7.1, 8");
	}
	if (inSampleRate < kLowestEarRate || inSampleRate > kHighestEarRate)
	{
		Refuse("sound for two ears at " + std::to_string(inSampleRate) +
			   " Hz is out of range; use a sample rate of " + std::to_string(kLowestEarRate) + " to " +
			   std::to_string(kHighestEarRate));
	}
}

} // namespace SonaroHost
