#include "MeterTap.h"

namespace SonaroHost::Sequence
{

MeterTap::MeterTap(SN::InterfaceRef<SN::IAudioMeterSetter> const& inMeter, StageClock const& inClock)
	: mMeter(inMeter),
	  mClock(inClock)
{
}

SN::InterfaceRef<SN::IAudioProcessor> MeterTap::Clone(SN::FrameRate const&, unsigned, unsigned)
{
	return zorvcore::classref::MakeObject<MeterTap>(mMeter, mClock.Clone());
}

void MeterTap::ProcessAudioData(dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime)
{
	if (!mClock.IsSettling())
	{
		mMeter->SetMeterData(inBuffer, inTime);
	}
}

void MeterTap::Reset()
{
	mMeter->Reset();
}

} // namespace SonaroHost::Sequence
