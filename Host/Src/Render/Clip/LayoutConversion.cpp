#include "SonaroHost/Render/LayoutConversion.h"

#include "Engine/MixdownScope.h"
#include "SonaroHost/Automation/AutomationParameter.h"
#include "SonaroHost/Engine/EngineFactory.h"

#include <initializer_list>
#include <vector>

namespace SonaroHost
{

LayoutConversion::LayoutConversion(LayoutPlan const& inPlan,
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate)
{
	if (inPlan.PassesThrough())
	{
		return;
	}
	mOutput.Init(inPlan.GetOutputLayout().size(), inContext->GetMaxBlockSize());
	if (inPlan.GetPanner())
	{
		MakePanner(inPlan, inContext, inFrameRate);
		return;
	}
	MixdownScope const mixdown(inPlan.GetMixdown());
	mMix = SN::AudioChannelMix::GetMixFunction(inPlan.GetInputLayout(), inPlan.GetOutputLayout());
}

void LayoutConversion::MakePanner(LayoutPlan const& inPlan,
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate)
{
	constexpr float kFront = 0.0f;
	constexpr float kNoCentre = 0.0f;
	constexpr float kNoLFE = 0.0f;
	SN::PanProcessorType const type = *inPlan.GetPanner();
	SN::AudioComponentParams parameters;
	parameters.push_back(AutomationParameter<float>::Create(inPlan.GetPan()));
	if (type == SN::kPanMonoTo51 || type == SN::kPanStereoTo51)
	{
		for (float const value : {kFront, kNoCentre, kNoLFE})
		{
			parameters.push_back(AutomationParameter<float>::Create(value));
		}
	}
	mPanner = EngineFactory().CreateAudioPanProcessorRenderer(
		{.mContext = inContext, .mFrameRate = inFrameRate, .mType = type, .mParams = parameters});
	mParameters = mPanner;
}

void LayoutConversion::Preroll(SN::TickTime const& inTime, bool inReverse)
{
	if (mPanner)
	{
		mPanner->Preroll(inTime, inReverse);
	}
}

dsp::AudioBuffer& LayoutConversion::Convert(dsp::AudioBuffer& ioBlock, SN::TickTime const& inTime)
{
	if (mParameters)
	{
		mParameters->UpdateControls(inTime);
	}
	if (mPanner ? mPanner->DoesNotAlterAudio() : !mMix)
	{
		return ioBlock;
	}
	mOutput.SetUseSize(ioBlock.GetUseSize());
	if (mPanner)
	{
		mPanner->ProcessAudioData(ioBlock, mOutput, inTime);
	}
	else
	{
		mMix(ioBlock, mOutput);
	}
	return mOutput;
}

} // namespace SonaroHost
