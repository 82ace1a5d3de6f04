#pragma once

#include "Panner/Algorithm/BalanceProcessor.h"
#include "Panner/AutomatedPanner.h"
#include "Panner/PannerClass.h"

namespace SN
{

// Balances a multichannel signal, its channels taken as pairs. One control, the pan: 0 left, 0.5 middle,
// 1 right. Gains do not ramp: a new pan holds from the next block on.
class AudioPannerBalance final : public PannerClass<AudioPannerBalance, AutomatedPanner>
{
public:
	// Whether a balance that will always stand in the middle says that it may be skipped.
	enum class IdentityTest
	{
		kOff,
		kOn,
	};

	AudioPannerBalance()
		: PannerClass(u"AudioPannerBalance", VX::kAudioChannelTypeAdaptive, VX::kAudioChannelTypeAdaptive)
	{
	}

	int Init(AutomatedPannerSettings const& inSettings, IdentityTest inIdentityTest)
	{
		mIdentityTest = inIdentityTest;
		return AutomatedPanner::Init(inSettings, kAnyParameterCount);
	}
	void CopyFrom(AudioPannerBalance const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
	{
		AutomatedPanner::CopyFrom(inOther, inFrameRate, inControlInterval);
		mIdentityTest = inOther.mIdentityTest;
	}

	// True when the test is on and the pan has no keyframes and stands in the middle, as last sampled.
	bool DoesNotAlterAudio() SONARO_NONBLOCKING override
	{
		return mIdentityTest == IdentityTest::kOn && GetParameterCount() > 0 && GetParameter(0) &&
			   StandsAt(0, 0.5f);
	}
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const&) SONARO_NONBLOCKING override
	{
		mBalance.Process(inInput, outOutput, GetValueOrZero(0));
	}

private:
	IdentityTest mIdentityTest = IdentityTest::kOff;
	BalanceProcessor mBalance;
};

} // namespace SN
