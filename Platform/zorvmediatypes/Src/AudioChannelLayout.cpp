#include "zorvmediatypes/AudioChannelLayout.h"

namespace zorvmediatypes
{

AudioChannelLayout CreateMonoChannelLayout()
{
	return {AudioChannelDescription::kMono};
}

AudioChannelLayout CreateStereoChannelLayout()
{
	return {AudioChannelDescription::kLeft, AudioChannelDescription::kRight};
}

AudioChannelLayout Create51ChannelLayout()
{
	using enum AudioChannelDescription;
	return {kLeft, kRight, kCenter, kLowFrequency, kLeftSurround, kRightSurround};
}

AudioChannelLayout Create71ChannelLayout()
{
	using enum AudioChannelDescription;
	return {kLeft, kRight, kCenter, kLowFrequency, kLeftBack, kRightBack, kLeftSurround, kRightSurround};
}

AudioChannelLayout CreateAmbisonic1ChannelLayout()
{
	using enum AudioChannelDescription;
	return {kAmbisonicW, kAmbisonicY, kAmbisonicZ, kAmbisonicX};
}

AudioChannelLayout CreateMultichannelLayout(int inChannels)
{
	AudioChannelLayout layout;
	for (int channel = 0; channel < inChannels; ++channel)
	{
		layout.push_back(static_cast<AudioChannelDescription>(
			static_cast<std::uint32_t>(AudioChannelDescription::kDiscrete0) +
			static_cast<std::uint32_t>(channel)));
	}
	return layout;
}

} // namespace zorvmediatypes
