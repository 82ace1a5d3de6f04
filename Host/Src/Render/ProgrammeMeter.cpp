#include "ProgrammeMeter.h"

namespace SonaroHost
{

ProgrammeMeter::ProgrammeMeter(
	SN::AudioChannelLayout const& inLayout, int inSampleRate, std::shared_ptr<LoudnessBank> const& inBank)
{
	if (LoudnessMeter::CanMeasure(inLayout, inSampleRate))
	{
		mMeter.emplace(
			inLayout, inSampleRate, LoudnessMeter::Memory::kGrowing, LoudnessMeter::Windows::kNone, inBank);
	}
}

void ProgrammeMeter::SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const&)
{
	if (mMeter)
	{
		mMeter->Add(inBuffer);
	}
}

std::optional<LoudnessReading> ProgrammeMeter::GetReading() const
{
	return mMeter ? std::optional(mMeter->GetReading()) : std::nullopt;
}

} // namespace SonaroHost
