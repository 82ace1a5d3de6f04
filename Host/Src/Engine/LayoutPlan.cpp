#include "SonaroHost/Engine/LayoutPlan.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
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

bool IsField(SN::AudioChannelLayout const& inLayout)
{
	return inLayout == zorvmediatypes::CreateAmbisonic1ChannelLayout();
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
		Refuse("a layout of " + std::to_string(mOutput.size()) + " channels is out of range; use 1 to " +
			   std::to_string(kMaxChannels));
	}
	if (IsField(mOutput) && !HasPlaces(mInput) && mInput.size() != mOutput.size())
	{
		Refuse("sound of " + GetLayoutName(mInput) +
			   " cannot become ambisonic1, which has 4 channels, W, Y, Z and X; choose 4 channels, or a "
			   "layout with speaker positions");
	}
}

void LayoutPlan::CheckMixdown() const
{
	bool const isMixdown = mInput == zorvmediatypes::Create51ChannelLayout() &&
						   (mOutput == zorvmediatypes::CreateMonoChannelLayout() ||
							   mOutput == zorvmediatypes::CreateStereoChannelLayout());
	if (mRequest.mMixdown && !isMixdown)
	{
		Refuse("a mixdown converts 5.1 to mono or stereo, not " + GetLayoutName(mInput) + " to " +
			   GetLayoutName(mOutput) + "; choose another layout or leave out the mixdown");
	}
}

void LayoutPlan::ChoosePanner()
{
	double const pan = *mRequest.mPan;
	// Written so that what is not a number fails it.
	if (!(pan >= 0.0 && pan <= 1.0))
	{
		Refuse("a pan of " + FormatNumber(pan) +
			   " is out of range; use 0 (left) to 1 (right); 0.5 is the centre");
	}
	mPanner = FindPanner(mInput, mOutput);
	if (!mPanner)
	{
		Refuse("cannot pan " + GetLayoutName(mInput) + " to " + GetLayoutName(mOutput) +
			   ": mono and stereo can be panned to stereo and 5.1, and 3 to " +
			   std::to_string(kMaxPanChannels) +
			   " channels without positions to the same number; choose other channels or another layout, or "
			   "leave out the pan");
	}
}

bool LayoutPlan::KeepsSamples() const
{
	if (mRequest.mPan)
	{
		constexpr double kMiddle = 0.5;
		return mInput == mOutput && *mRequest.mPan == kMiddle;
	}
	if (mInput != mOutput && (IsField(mOutput) || IsField(mInput)))
	{
		return !HasPlaces(mInput) || !HasPlaces(mOutput);
	}
	// Places are folded together where the output has fewer of them; channels without places go by
	// position.
	return mOutput.size() >= mInput.size() || !HasPlaces(mInput) || !HasPlaces(mOutput);
}

} // namespace SonaroHost
