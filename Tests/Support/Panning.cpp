#include "Support/Panning.h"

#include "Sonaro/GraphFactory.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/SonaroFactory.h"
#include "Support/Buffers.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace SN::Testing
{

namespace
{

constexpr float kStaleInput = 9999.0f;

// The longest block from inFirst on within which the flags of all inputs stay.
unsigned GetUniformLength(
	SilentAt const& inSilentAt, PanRange const& inRange, long long inFirst, unsigned inLength)
{
	for (unsigned i = 1; inSilentAt && i < inLength; ++i)
	{
		for (unsigned channel = 0; channel < inRange.mInputs; ++channel)
		{
			if (inSilentAt(channel, inFirst + i) != inSilentAt(channel, inFirst))
			{
				return i;
			}
		}
	}
	return inLength;
}

void RunBlock(IAudioPanProcessor& ioPanner, long long inFirst, FrameRate const& inRate,
	dsp::AudioBuffer& ioInput, SampleFunction const& inInput, SilentAt const& inSilentAt, Samples& ioResult)
{
	unsigned const frames = ioInput.GetUseSize();
	ioInput.ClearSilenceFlags(dsp::SilenceFlags::All());
	for (unsigned channel = 0; channel < ioInput.GetNumChannels(); ++channel)
	{
		bool const isSilent = inSilentAt && inSilentAt(channel, inFirst);
		for (unsigned i = 0; i < frames; ++i)
		{
			ioInput.GetChannel(channel)[i] = isSilent ? kStaleInput : inInput(channel, inFirst + i);
		}
		ioInput.SetChannelZero(channel, isSilent);
	}
	dsp::AudioBuffer output = MakeStaleBuffer(ioResult.size(), frames);
	ioPanner.ProcessAudioData(ioInput, output, TickTime(inFirst, inRate));
	for (unsigned channel = 0; channel < ioResult.size(); ++channel)
	{
		auto const heard = Heard(output, channel);
		ioResult[channel].insert(ioResult[channel].end(), heard.begin(), heard.end());
	}
}

} // namespace

InterfaceRef<IAudioPanProcessor> MakePanner(InterfaceRef<IAudioRenderContext> const& inContext,
	PanProcessorType inType, std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams)
{
	return GraphFactory().CreateAudioPanProcessorRenderer(
		{.mContext = inContext, .mFrameRate = k48000Hz, .mType = inType, .mParams = inParams});
}

InterfaceRef<IAudioPanProcessor> MakeDirectPanner(InterfaceRef<IAudioRenderContext> const& inContext,
	PanProcessorType inType, int inOutputChannels, AudioChannelMatrix const& inMatrix,
	std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams)
{
	return GraphFactory().CreateDirectAudioPanProcessorRenderer({
		.mContext = inContext,
		.mFrameRate = k48000Hz,
		.mType = inType,
		.mOutputChannels = inOutputChannels,
		.mMatrix = inMatrix,
		.mParams = inParams,
	});
}

InterfaceRef<IAudioPanProcessor> MakeAnyPanner(InterfaceRef<IAudioRenderContext> const& inContext,
	PanProcessorType inType, std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
	FrameRate const& inFrameRate)
{
	InterfaceRef<IAudioPanProcessor> panner;
	auto const factory = SonaroFactory::CreateClassRef();
	bool const isDirect = inType == kPanMonoToAdaptive || inType == kPanStereoToAdaptive;
	EXPECT_EQ(isDirect ? factory->CreateDirectAudioPanProcessorRenderer(
							 inContext, inFrameRate, inType, 2, {{0, {0, 1}}}, false, inParams, &panner)
					   : factory->CreateAudioPanProcessorRenderer(
							 inContext, inFrameRate, inType, false, inParams, &panner),
		kSuccess);
	return panner;
}

unsigned GetNumControls(PanProcessorType inType)
{
	switch (inType)
	{
	case kPanMonoTo51:
	case kPanStereoTo51:
		return 4;
	case kPanStereoToMono:
	case kPan51ToMono:
	case kPan51ToStereo:
		return 0;
	default:
		return 1;
	}
}

PanRange RangeOf(IAudioPanProcessor& ioPanner, unsigned inFrames)
{
	return {.mFrames = inFrames,
		.mInputs = ioPanner.GetNumInputChannels(),
		.mOutputs = ioPanner.GetNumOutputChannels()};
}

Samples RunPanner(IAudioPanProcessor& ioPanner, PanRange const& inRange, BlockSizes const& inBlockSizes,
	SampleFunction const& inInput, SilentAt const& inSilentAt)
{
	InterfaceRef<IParameterOwnerMixin> const owner(InterfaceRef<Unknown>::FromThis(&ioPanner));
	Samples result(inRange.mOutputs);
	dsp::AudioBuffer input(inRange.mInputs, inRange.mFrames);
	for (unsigned done = 0; done < inRange.mFrames;)
	{
		unsigned const inInterval = done % inRange.mControlInterval;
		long long const first = inRange.mStartFrame + done;
		if (owner && inInterval == 0)
		{
			owner->UpdateControls(TickTime(first, inRange.mFrameRate));
		}
		unsigned const longest =
			std::min({inBlockSizes(), inRange.mFrames - done, inRange.mControlInterval - inInterval});
		unsigned const count = GetUniformLength(inSilentAt, inRange, first, longest);
		input.SetUseSize(count);
		RunBlock(ioPanner, first, inRange.mFrameRate, input, inInput, inSilentAt, result);
		done += count;
	}
	return result;
}

std::vector<float> GetGainsAt(
	IAudioPanProcessor& ioPanner, PanRange const& inRange, unsigned long long inSilentInputs)
{
	Samples const out = RunPanner(
		ioPanner, inRange, BlocksOf(inRange.mFrames), [](unsigned long long, long long) { return 1.0f; },
		[inSilentInputs](unsigned long long inChannel, long long)
		{ return (inSilentInputs >> inChannel & 1) != 0; });
	std::vector<float> gains;
	for (auto const& channel : out)
	{
		gains.push_back(channel.back());
	}
	return gains;
}

} // namespace SN::Testing
