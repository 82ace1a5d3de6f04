#include "SonaroHost/Engine/LayoutPlan.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <string>

namespace SonaroHost
{

namespace
{

std::optional<SN::PanProcessorType> FindPanner(
	SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput)
{
	auto const mono = zorvmediatypes::CreateMonoChannelLayout();
	auto const stereo = zorvmediatypes::CreateStereoChannelLayout();
	auto const surround = zorvmediatypes::Create51ChannelLayout();
	struct Panner
	{
		SN::AudioChannelLayout const& mInput;
		SN::AudioChannelLayout const& mOutput;
		SN::PanProcessorType mType;
	};
	Panner const panners[] = {
		{mono, stereo, SN::kPanMonoToStereo},
		{stereo, stereo, SN::kPanStereoToStereo},
		{mono, surround, SN::kPanMonoTo51},
		{stereo, surround, SN::kPanStereoTo51},
	};
	for (Panner const& panner : panners)
	{
		if (inInput == panner.mInput && inOutput == panner.mOutput)
		{
			return panner.mType;
		}
	}
	bool const isBalance = inInput == inOutput && !HasPlaces(inInput) && inInput.size() <= kMaxPanChannels;
	return isBalance ? std::optional(SN::kPanBalance) : std::nullopt;
}

} // namespace

LayoutPlan::LayoutPlan(SN::AudioChannelLayout const& inInput, LayoutRequest const& inRequest)
	: mRequest(inRequest),
	  mInput(inInput)
{
	ChooseOutput();
	CheckMixdown();
	if (mRequest.mPan)
	{
		ChoosePanner();
	}
}

void LayoutPlan::ChooseOutput()
{
	bool const spreads = mRequest.mPan && mInput == zorvmediatypes::CreateMonoChannelLayout();
	mOutput = mRequest.mLayout.value_or(spreads ? zorvmediatypes::CreateStereoChannelLayout() : mInput);
	if (mOutput.empty() || mOutput.size() > kMaxChannels)
	{
		Refuse("a layout has 1 to " + std::to_string(kMaxChannels) + " channels, not " +
			   std::to_string(mOutput.size()));
	}
}

void LayoutPlan::CheckMixdown() const
{
	bool const isMixdown = mInput == zorvmediatypes::Create51ChannelLayout() &&
						   (mOutput == zorvmediatypes::CreateMonoChannelLayout() ||
							   mOutput == zorvmediatypes::CreateStereoChannelLayout());
	if (mRequest.mMixdown && !isMixdown)
	{
		Refuse("a mixdown is for 5.1 that becomes mono or stereo, and this goes from " +
			   GetLayoutName(mInput) + " to " + GetLayoutName(mOutput) +
			   "; choose another layout or leave the mixdown away");
	}
}

void LayoutPlan::ChoosePanner()
{
	double const pan = *mRequest.mPan;
	// Written so that what is not a number fails it.
	if (!(pan >= 0.0 && pan <= 1.0))
	{
		Refuse("a pan goes from 0, left, over 0.5, the middle, to 1, right");
	}
	mPanner = FindPanner(mInput, mOutput);
	if (!mPanner)
	{
		Refuse("no pan leads from " + GetLayoutName(mInput) + " to " + GetLayoutName(mOutput) +
			   ": it takes mono or stereo to stereo or 5.1, and 3 to " + std::to_string(kMaxPanChannels) +
			   " channels without places to as many; choose other channels or another layout, or leave the "
			   "pan away");
	}
}

bool LayoutPlan::KeepsSamples() const
{
	if (mRequest.mPan)
	{
		constexpr double kMiddle = 0.5;
		return mInput == mOutput && *mRequest.mPan == kMiddle;
	}
	// Places are folded together where the output has fewer of them; channels without places go by
	// position.
	return mOutput.size() >= mInput.size() || !HasPlaces(mInput) || !HasPlaces(mOutput);
}

} // namespace SonaroHost
