#include "GraphTools.h"

#include "../MixdownScope.h"
#include "ConversionPanner.h"
#include "Priming.h"
#include "Sonaro/SonaroFactory.h"
#include "SonaroHost/AutomationParameter.h"
#include "SonaroHost/LayoutPlan.h"
#include "SonaroHost/RenderContextScope.h"
#include "SonaroHost/TimeTransforms.h"

namespace SonaroHost::Sequence
{

namespace
{

// Something to be told apart by.
class BareIdentity final : public SN::Unknown
{
};

} // namespace

GraphTools::GraphTools(
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate)
	: mContext(inContext),
	  mFrameRate(inFrameRate),
	  mFactory(SN::SonaroFactory::CreateClassRef()),
	  mSameTime(zorvcore::classref::MakeObject<IdentityTimeTransform>()),
	  mFullGain(AutomationParameter<float>::Create(1.0f)),
	  mNotMuted(AutomationParameter<bool>::Create(false))
{
}

std::int64_t GraphTools::ToFrames(SN::TickTime const& inTime) const
{
	SN::TickTime const half = SN::TickTime::FromTicks(mFrameRate.GetTicksPerFrame() / 2);
	return (inTime + half).ToFrame64(mFrameRate);
}

std::int64_t GraphTools::GetLatency(SN::IAudioProcessor& inProcessor) const
{
	return mContext->IsDelayCompensationDisabled() ? 0 : ToFrames(inProcessor.GetDelay());
}

Generator GraphTools::GetStream(Media const& inMedia)
{
	Generator& stream = mStreams[&inMedia];
	if (!stream)
	{
		constexpr int kAllChannels = -1;
		constexpr double kStreamSpeed = 1.0;
		// Under a key the clones of clips go on sharing it.
		CheckEngineResult(mFactory->CreateAudioStreamRenderer(mContext, mFrameRate, inMedia.mOpen(mFrameRate),
							  kAllChannels, kStreamSpeed, MakeIdentity(), &stream),
			"a stream");
	}
	return stream;
}

Panner GraphTools::GetFixedPanner(
	SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput, Mixdown const& inMixdown)
{
	for (FixedPanner const& known : mFixedPanners)
	{
		if (known.mInput == inInput && known.mOutput == inOutput && known.mMixdown == inMixdown)
		{
			return known.mPanner;
		}
	}
	mFixedPanners.push_back({inInput, inOutput, inMixdown, MakeFixedPanner(inInput, inOutput, inMixdown)});
	return mFixedPanners.back().mPanner;
}

Panner GraphTools::MakeFixedPanner(SN::AudioChannelLayout const& inInput,
	SN::AudioChannelLayout const& inOutput, Mixdown const& inMixdown) const
{
	if (inInput != inOutput)
	{
		MixdownScope const mixdown(inMixdown);
		return zorvcore::classref::MakeObject<ConversionPanner>(inInput, inOutput);
	}
	Panner panner;
	CheckEngineResult(mFactory->CreateNoneAudioPanProcessorRenderer(mContext, inInput, &panner), "a panner");
	return panner;
}

Panner GraphTools::MakePanner(SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput,
	Parameter const& inPan) const
{
	constexpr double kMiddle = 0.5;
	LayoutRequest request;
	request.mLayout = inOutput;
	request.mPan = kMiddle;
	SN::PanProcessorType const type = *LayoutPlan(inInput, request).GetPanner();
	std::vector<Parameter> parameters = {inPan};
	if (type == SN::kPanMonoTo51 || type == SN::kPanStereoTo51)
	{
		// In front, nothing to the centre nor to the low frequency channel.
		parameters.resize(4, AutomationParameter<float>::Create(0.0f));
	}
	constexpr bool kActionFlag = true;
	Panner panner;
	CheckEngineResult(mFactory->CreateAudioPanProcessorRenderer(
						  mContext, mFrameRate, type, kActionFlag, parameters, &panner),
		"a panner");
	PrimePanner(*panner, mFrameRate);
	return panner;
}

Identity GraphTools::MakeIdentity()
{
	return zorvcore::classref::MakeObject<BareIdentity>();
}

} // namespace SonaroHost::Sequence
