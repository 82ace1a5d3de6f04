#include "Sonaro/AudioChannelMix.h"

#include "Sonaro/AudioChannelMixFunctions.h"
#include "zorvmediatypes/AudioChannelLayout.h"
#include "zorvmediatypes/ChannelConversionMatrix.h"

#include <utility>

namespace SN::AudioChannelMix
{

namespace
{

unsigned sMixdownType = kMixdownFront;

using Mix = void (*)(dsp::AudioBuffer const&, dsp::AudioBuffer&);

// How 5.1 is folded, by MixdownType51.
struct Fold
{
	Mix mToMono;
	Mix mToStereo;
};

Fold GetFold()
{
	switch (sMixdownType)
	{
	case kMixdownFront:
		return {&ACM51FrontToMono, &ACM51FrontToStereo};
	case kMixdownFrontRear:
		return {&ACM51FrontRearToMono, &ACM51FrontRearToStereo};
	case kMixdownFrontRearLFE:
		return {&ACM51FrontRearLFEToMono, &ACM51FrontRearLFEToStereo};
	default:
		return {&ACM51FrontLFEToMono, &ACM51FrontLFEToStereo};
	}
}

MixFunction GetMultichannel(AudioChannelLayout const& inOutputLayout)
{
	if (inOutputLayout == VX::kAudioChannelLayout_Mono)
	{
		return &ACMMultichannelToMono;
	}
	if (inOutputLayout == VX::kAudioChannelLayout_Stereo)
	{
		return &ACMMultichannelToStereo;
	}
	if (inOutputLayout == VX::kAudioChannelLayout_51)
	{
		return &ACMMultichannelTo51;
	}
	return &ACMMultichannelToArbitrary;
}

// Empty for a pair that has no conversion of its own.
MixFunction GetFixedFunction(
	AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout)
{
	bool const toMono = inOutputLayout == VX::kAudioChannelLayout_Mono;
	bool const toStereo = inOutputLayout == VX::kAudioChannelLayout_Stereo;
	if (inInputLayout == inOutputLayout)
	{
		return &ACMSame;
	}
	if (inInputLayout == VX::kAudioChannelLayout_Mono && toStereo)
	{
		return &ACMMonoToStereoDefault;
	}
	if (inInputLayout == VX::kAudioChannelLayout_Stereo && toMono)
	{
		return &ACMStereoToMonoDefault;
	}
	if (inInputLayout == VX::kAudioChannelLayout_51 && (toMono || toStereo))
	{
		return toMono ? GetFold().mToMono : GetFold().mToStereo;
	}
	if (inInputLayout == VX::kAudioChannelLayout_Multichannel)
	{
		return GetMultichannel(inOutputLayout);
	}
	return {};
}

// The layout of a count that has one of its own.
AudioChannelLayout const* FindLayout(unsigned inChannels)
{
	switch (inChannels)
	{
	case 1:
		return &VX::kAudioChannelLayout_Mono;
	case 2:
		return &VX::kAudioChannelLayout_Stereo;
	case 6:
		return &VX::kAudioChannelLayout_51;
	default:
		return nullptr;
	}
}

} // namespace

MixFunction GetMixFunction(AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout)
{
	if (MixFunction function = GetFixedFunction(inInputLayout, inOutputLayout))
	{
		return function;
	}
	zorvmediatypes::ChannelConversionMatrix matrix;
	zorvmediatypes::ComputeChannelConversionMatrix(inInputLayout, inOutputLayout, matrix);
	return [matrix = std::move(matrix)](dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
	{ ACMArbitraryToArbitrary(matrix, inInput, outOutput); };
}

MixFunction GetMixFunctionByChannels(unsigned inInputChannels, int inOutputChannels)
{
	constexpr unsigned kMultichannel = VX::kAdaptiveChannels;
	AudioChannelLayout const* const input = inInputChannels == kMultichannel
												? &VX::kAudioChannelLayout_Multichannel
												: FindLayout(inInputChannels);
	AudioChannelLayout const* const output =
		inOutputChannels > 0 ? FindLayout(static_cast<unsigned>(inOutputChannels)) : nullptr;
	// Pairs that the table of fixed conversions knows by their counts; 1 to 6, for one, is not among them.
	if (input && output)
	{
		if (MixFunction function = GetFixedFunction(*input, *output))
		{
			return function;
		}
	}
	if (inInputChannels == kMultichannel)
	{
		return inOutputChannels == static_cast<int>(kMultichannel) ? &ACMSame : &ACMMultichannelToArbitrary;
	}
	return GetMixFunction(zorvmediatypes::CreateMultichannelLayout(static_cast<int>(inInputChannels)),
		zorvmediatypes::CreateMultichannelLayout(inOutputChannels));
}

unsigned Get51MixdownType()
{
	return sMixdownType;
}

void Set51MixdownType(unsigned inType)
{
	sMixdownType = inType;
}

} // namespace SN::AudioChannelMix
