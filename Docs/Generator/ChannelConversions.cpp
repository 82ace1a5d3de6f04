#include "ChannelConversions.h"

#include "Sonaro/AudioChannelMix.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

namespace SonaroDocuments
{

namespace
{

using namespace SN;
using Names = std::vector<std::string>;

struct Layout
{
	std::string mName;
	AudioChannelLayout mLayout;
	Names mChannels;
};

Layout MakeDiscrete(int inChannels)
{
	Layout layout{
		std::to_string(inChannels) + " channels", zorvmediatypes::CreateMultichannelLayout(inChannels), {}};
	for (int channel = 1; channel <= inChannels; ++channel)
	{
		layout.mChannels.push_back(std::to_string(channel));
	}
	return layout;
}

struct Gain
{
	float mInBuffers;
	float mInWindows;
};

// What a conversion makes of full scale on one input.
Gain MeasureGain(AudioChannelMix::MixFunction const& inMix, Layout const& inFrom, Layout const& inTo,
	unsigned inInput, unsigned inOutput)
{
	constexpr unsigned kFrames = 4;
	dsp::AudioBuffer input(inFrom.mLayout.size(), kFrames);
	dsp::AudioBuffer output(inTo.mLayout.size(), kFrames);
	std::fill_n(input.GetChannel(inInput), kFrames, 1.0f);
	auto const read = [&]
	{ return output.IsChannelSilent(inOutput) ? 0.0f : output.GetChannel(inOutput)[0]; };
	inMix(input, output);
	float const inBuffers = read();
	dsp::AudioSubBuffer window;
	window.Init(input.GetNumChannels());
	window.Assign(input, 0);
	inMix(window, output);
	return {inBuffers, read()};
}

std::string FormatGain(float inGain)
{
	if (inGain == 0.0f)
	{
		return "·";
	}
	char text[16];
	std::snprintf(text, sizeof(text), "%.4f", static_cast<double>(inGain));
	return text;
}

std::string FormatGain(Gain const& inGain)
{
	std::string const inBuffers = FormatGain(inGain.mInBuffers);
	std::string const inWindows = FormatGain(inGain.mInWindows);
	return inBuffers == inWindows ? inBuffers : inBuffers + " / " + inWindows;
}

std::string DescribePair(Layout const& inFrom, Layout const& inTo, std::string const& inRemark = {})
{
	auto const mix = AudioChannelMix::GetMixFunction(inFrom.mLayout, inTo.mLayout);
	std::string text = "### " + inFrom.mName + " to " + inTo.mName + inRemark + "\n\n|  |";
	std::string rule = "|---|";
	for (std::string const& name : inFrom.mChannels)
	{
		text.append(" ").append(name).append(" |");
		rule += "---|";
	}
	text += "\n" + rule + "\n";
	for (unsigned output = 0; output < inTo.mChannels.size(); ++output)
	{
		text.append("| **").append(inTo.mChannels[output]).append("** |");
		for (unsigned input = 0; input < inFrom.mChannels.size(); ++input)
		{
			text.append(" ").append(FormatGain(MeasureGain(mix, inFrom, inTo, input, output))).append(" |");
		}
		text += "\n";
	}
	return text + "\n";
}

} // namespace

std::string DescribeConversions()
{
	Layout const mono{"mono", VX::kAudioChannelLayout_Mono, {"M"}};
	Layout const stereo{"stereo", VX::kAudioChannelLayout_Stereo, {"L", "R"}};
	Layout const surround{"5.1", VX::kAudioChannelLayout_51, {"L", "R", "C", "LFE", "Ls", "Rs"}};
	using enum AudioChannelDescription;
	Layout const quad{"four places", {kLeft, kRight, kLeftSurround, kRightSurround}, {"L", "R", "Ls", "Rs"}};

	std::string text =
		"# Conversions between channel layouts\n\n"
		"The linear gain from each input channel (column) to each output channel (row), measured on the "
		"engine; a dot means none. `Docs/make-documents.sh` writes this page.\n\n"
		"## Fixed conversions\n\n"
		"If a cell has two gains, the first applies to whole buffers and the second to windows. "
		"Tracks, their items and their sends work in windows, so the second is what `sonaro` and "
		"every sequence render; the first applies if a host converts its own buffers with "
		"`AudioChannelMix::GetMixFunction`.\n\n";
	text += DescribePair(mono, stereo) + DescribePair(stereo, mono);
	constexpr std::pair<unsigned, char const*> kMixdowns[] = {
		{AudioChannelMix::kMixdownFront, ", front channels"},
		{AudioChannelMix::kMixdownFrontRear, ", front and rear"},
		{AudioChannelMix::kMixdownFrontLFE, ", front and LFE"},
		{AudioChannelMix::kMixdownFrontRearLFE, ", front, rear and LFE"},
	};
	for (auto const& [type, remark] : kMixdowns)
	{
		AudioChannelMix::Set51MixdownType(type);
		text += DescribePair(surround, mono, remark) + DescribePair(surround, stereo, remark);
	}
	AudioChannelMix::Set51MixdownType(AudioChannelMix::kMixdownFront);

	text += "## By place\n\n"
			"Used if both layouts have known speaker positions and there is no fixed conversion, with the "
			"coefficients of ITU-R BS.775.\n\n";
	text += DescribePair(mono, surround) + DescribePair(stereo, surround) + DescribePair(surround, quad) +
			DescribePair(quad, stereo) + DescribePair(quad, mono) + DescribePair(quad, surround);

	Layout const field{"ambisonic1", zorvmediatypes::CreateAmbisonic1ChannelLayout(), {"W", "Y", "Z", "X"}};
	text +=
		"## Sound fields\n\n"
		"Loudspeakers become plane waves from where they stand, and of a sound field each loudspeaker gets "
		"what a cardioid microphone hears.\n\n";
	text += DescribePair(mono, field) + DescribePair(stereo, field) + DescribePair(surround, field) +
			DescribePair(field, mono) + DescribePair(field, stereo) + DescribePair(field, surround);

	text +=
		"## By position\n\n"
		"Used if a layout has channels without speaker positions: channels are copied in their order. From "
		"32 channels, the first ones are copied likewise.\n\n";
	text += DescribePair(mono, MakeDiscrete(2)) + DescribePair(stereo, MakeDiscrete(4)) +
			DescribePair(surround, MakeDiscrete(4)) + DescribePair(MakeDiscrete(3), stereo) +
			DescribePair(MakeDiscrete(8), surround);
	text.pop_back();
	return text;
}

} // namespace SonaroDocuments
