#pragma once

#include "PlainStage.h"
#include "Playhead.h"
#include "Sonaro/IAudioMeterSetter.h"

namespace SonaroHost::Sequence
{

// Hands audio to a meter and leaves it alone, like the engine's own stage; unlike it in exports and nested sequences,
// too, and nothing of what is only rendered to fill histories.
class MeterTap final : public SN::Implements<MeterTap, PlainStage>
{
public:
	MeterTap(SN::InterfaceRef<SN::IAudioMeterSetter> const& inMeter, StageClock const& inClock)
		: mMeter(inMeter),
		  mClock(inClock)
	{
	}

	SN::InterfaceRef<SN::IAudioProcessor> Clone(SN::FrameRate const&, unsigned, unsigned) override
	{
		return zorvcore::classref::MakeObject<MeterTap>(mMeter, mClock.Clone());
	}
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime) SONARO_NONBLOCKING override
	{
		if (!mClock.IsSettling())
		{
			mMeter->SetMeterData(inBuffer, inTime);
		}
	}
	void Reset() override { mMeter->Reset(); }

	std::u16string GetNodeName() override { return u"MeterTap"; }

private:
	SN::InterfaceRef<SN::IAudioMeterSetter> mMeter;
	StageClock mClock;
};

} // namespace SonaroHost::Sequence
