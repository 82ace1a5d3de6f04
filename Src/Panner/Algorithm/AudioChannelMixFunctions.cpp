#include "Sonaro/AudioChannelMixFunctions.h"

#include "zorvaccelerate/ChannelMixing.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioBufferChannel.h"

#include <algorithm>

namespace SN::AudioChannelMix
{

namespace
{

using zorvaccelerate::utility::ChannelFold;
using zorvaccelerate::utility::FoldGains;

// A conversion with fixed coefficients.
struct FixedMix
{
	ChannelFold mFold;
	// How many channels are read, from the first on, and how many are written.
	unsigned mInputs;
	unsigned mOutputs;
	// Flagged channels below this one are overwritten with zeros.
	unsigned long long mZeroScanBelow;
	FoldGains mFrameGains;
	FoldGains mGroupGains;
};

constexpr unsigned kMaxInputs = 6;

// Shortened thirds and sixths, and the reciprocals of the sums of gains.
constexpr float kThird = 1.0f / 3.0f;
constexpr float kShortThird = 0.333333f;
constexpr float kShorterThird = 0.33f;
constexpr float kSixth = 1.0f / 6.0f;
constexpr float kTwoThirds = 2.0f / 3.0f;
constexpr float kShortTwoThirds = 0.666666f;

bool Refuses(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	if (inInput.IsSilent() || inInput.GetUseSize() > outOutput.GetUseSize())
	{
		outOutput.SetSilenceFlags(dsp::SilenceFlags::All());
		return true;
	}
	return false;
}

void ZeroFlaggedChannels(dsp::AudioBuffer const& inInput, unsigned long long inBelow)
{
	auto& input = const_cast<dsp::AudioBuffer&>(inInput);
	for (unsigned long long channel = 0; channel < std::min(inBelow, inInput.GetNumChannels()); ++channel)
	{
		if (inInput.IsChannelSilent(channel))
		{
			input.ZeroChannel(channel, input.GetUseSize(), false);
		}
	}
}

// The first inChannels channels hold inFrames frames; all flags go. What a flag has covered beyond them
// becomes zeros first.
void ClearFlagsAfterWriting(dsp::AudioBuffer& ioOutput, unsigned inChannels, unsigned inFrames)
{
	for (unsigned long long channel = inChannels; channel < ioOutput.GetNumChannels(); ++channel)
	{
		ioOutput.NoteChannelWrite(channel, 0);
	}
	ioOutput.NoteBufferWrite(0, inFrames);
}

void Run(FixedMix const& inMix, dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	if (Refuses(inInput, outOutput))
	{
		return;
	}
	if (inInput.GetNumChannels() < inMix.mInputs || outOutput.GetNumChannels() < inMix.mOutputs)
	{
		outOutput.SetSilenceFlags(dsp::SilenceFlags::All());
		return;
	}
	ZeroFlaggedChannels(inInput, inMix.mZeroScanBelow);

	float const* inputs[kMaxInputs] = {};
	for (unsigned channel = 0; channel < inMix.mInputs; ++channel)
	{
		inputs[channel] = inInput.GetChannel(channel);
	}
	unsigned const frames = inInput.GetUseSize();
	bool const inGroups = inInput.CanProcessInGroupsOfFour() && outOutput.CanProcessInGroupsOfFour();
	// The last group ends with the frames, not with the padding after them, which changes no result.
	zorvaccelerate::utility::FoldChannels(inMix.mFold, frames, inputs,
		inGroups ? inMix.mGroupGains : inMix.mFrameGains, outOutput.GetChannels());
	ClearFlagsAfterWriting(outOutput, inMix.mOutputs, frames);
}

void RunMultichannel(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	if (Refuses(inInput, outOutput))
	{
		return;
	}
	for (unsigned long long channel = 0; channel < outOutput.GetNumChannels(); ++channel)
	{
		outOutput.CopyChannel(inInput, channel, channel);
	}
}

// Adds one input to the output of a row.
void AddScaled(dsp::AudioBufferChannel const& inInput, float inGain, dsp::AudioBufferChannel& ioOutput)
{
	float const* const input = inInput.GetChannel(0);
	float* const output = ioOutput.GetChannel(0);
	if (ioOutput.IsChannelSilent(0))
	{
		ioOutput.CopyFromScale(inInput, inGain);
	}
	else if (input)
	{
		// The sum is the same in groups or not.
		zorvaccelerate::utility::MulConstantAdd(
			std::min(inInput.GetUseSize(), ioOutput.GetUseSize()), input, inGain, output);
	}
}

} // namespace

void ACM51FrontToMono(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	Run({ChannelFold::kFrontToMono, 3, 1, 3, {.mA = kShortThird}, {.mA = kThird}}, inInput, outOutput);
}

void ACM51FrontToStereo(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	constexpr FoldGains kGains{.mA = 0.75f, .mB = 0.5f, .mTotal = 0.8f};
	Run({ChannelFold::kFrontToStereo, 3, 2, 3, kGains, kGains}, inInput, outOutput);
}

void ACM51FrontRearToMono(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	Run({ChannelFold::kFrontRearToMono, 6, 1, 6, {.mA = kShortThird, .mB = kSixth, .mTotal = 0.75f},
			{.mA = kThird, .mB = kSixth, .mTotal = 0.75f}},
		inInput, outOutput);
}

void ACM51FrontRearToStereo(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	constexpr float kTotal = 0.63157f;
	Run({ChannelFold::kFrontRearToStereo, 6, 2, 6,
			{.mA = 0.75f, .mB = 0.5f, .mC = kShorterThird, .mTotal = kTotal},
			{.mA = 0.75f, .mB = 0.5f, .mC = kThird, .mTotal = kTotal}},
		inInput, outOutput);
}

void ACM51FrontLFEToMono(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	constexpr float kTotal = 0.85714f;
	Run({ChannelFold::kFrontLFEToMono, 4, 1, 4, {.mA = kShortThird, .mB = kSixth, .mTotal = kTotal},
			{.mA = kThird, .mB = kSixth, .mTotal = kTotal}},
		inInput, outOutput);
}

void ACM51FrontLFEToStereo(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	constexpr float kTotal = 0.63157f;
	Run({ChannelFold::kFrontLFEToStereo, 4, 2, 4,
			{.mA = 0.75f, .mB = 0.5f, .mC = kShorterThird, .mTotal = kTotal},
			{.mA = 0.75f, .mB = 0.5f, .mC = kThird, .mTotal = kTotal}},
		inInput, outOutput);
}

void ACM51FrontRearLFEToMono(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	Run({ChannelFold::kFrontRearLFEToMono, 6, 1, 6,
			{.mA = kShortThird, .mB = kSixth, .mTotal = kShortTwoThirds},
			{.mA = kThird, .mB = kSixth, .mTotal = kTwoThirds}},
		inInput, outOutput);
}

void ACM51FrontRearLFEToStereo(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	constexpr float kTotal = 0.521739f;
	Run({ChannelFold::kFrontRearLFEToStereo, 6, 2, 6,
			{.mA = 0.75f, .mB = 0.5f, .mC = kShorterThird, .mTotal = kTotal},
			{.mA = 0.75f, .mB = 0.5f, .mC = kThird, .mTotal = kTotal}},
		inInput, outOutput);
}

void ACMStereoToMonoDefault(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	constexpr FoldGains kGains{.mTotal = 0.5f};
	Run({ChannelFold::kStereoToMono, 2, 1, dsp::AudioBuffer::kMaxChannels, kGains, kGains}, inInput,
		outOutput);
}

void ACMMonoToStereoDefault(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	if (Refuses(inInput, outOutput))
	{
		return;
	}
	// Another channel of a wider buffer may be heard.
	ZeroFlaggedChannels(inInput, 1);
	unsigned const frames = inInput.GetUseSize();
	unsigned const outputs = std::min(2u, static_cast<unsigned>(outOutput.GetNumChannels()));
	for (unsigned channel = 0; channel < outputs; ++channel)
	{
		zorvaccelerate::utility::Copy(frames, inInput.GetChannel(0), outOutput.GetChannel(channel));
	}
	ClearFlagsAfterWriting(outOutput, outputs, frames);
}

void ACMSame(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	outOutput.CopyFrom(inInput);
}

void ACMMultichannelToMono(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	RunMultichannel(inInput, outOutput);
}

void ACMMultichannelToStereo(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	RunMultichannel(inInput, outOutput);
}

void ACMMultichannelTo51(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	RunMultichannel(inInput, outOutput);
}

void ACMMultichannelToArbitrary(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	RunMultichannel(inInput, outOutput);
}

void ACMArbitraryToArbitrary(zorvmediatypes::ChannelConversionMatrix const& inMatrix,
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	if (Refuses(inInput, outOutput))
	{
		return;
	}
	ZeroFlaggedChannels(inInput, dsp::AudioBuffer::kMaxChannels);
	if (inMatrix.empty() || inMatrix.front().empty())
	{
		return;
	}
	dsp::AudioBufferChannel input;
	dsp::AudioBufferChannel output;
	for (std::size_t row = 0; row < inMatrix.size(); ++row)
	{
		output.Assign(outOutput, row);
		for (std::size_t column = 0; column < inMatrix[row].size(); ++column)
		{
			auto const gain = static_cast<float>(inMatrix[row][column]);
			input.AssignForReading(inInput, column);
			if (column == 0)
			{
				// Also with a gain of 0, so that the row starts from a defined state.
				output.CopyFromScale(input, gain);
			}
			else if (gain == 1.0f)
			{
				output.Mix(input);
			}
			else if (gain != 0.0f)
			{
				AddScaled(input, gain, output);
			}
		}
	}
}

} // namespace SN::AudioChannelMix
