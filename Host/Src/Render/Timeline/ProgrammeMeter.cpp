#include "ProgrammeMeter.h"

#include <utility>

namespace SonaroHost::Otio
{

ProgrammeMeter::ProgrammeMeter(SN::AudioChannelLayout inLayout)
	: mLayout(std::move(inLayout))
{
}

void ProgrammeMeter::Share(std::shared_ptr<LoudnessBank> inBank)
{
	mBank = std::move(inBank);
}

void ProgrammeMeter::Init(SN::FrameRate const& inFrameRate, unsigned)
{
	double const rate = inFrameRate.GetSamplesPerSecond();
	if (LoudnessMeter::CanMeasure(mLayout, rate))
	{
		mMeter.emplace(mLayout, rate, LoudnessMeter::Memory::eGrowing, LoudnessMeter::Windows::eNone, mBank);
	}
}

void ProgrammeMeter::SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const&)
{
	if (mMeter)
	{
		mMeter->Add(inBuffer);
	}
}

void ProgrammeMeter::Shutdown()
{
	mMeter.reset();
}

void ProgrammeMeter::Reset()
{
}

std::optional<LoudnessReading> ProgrammeMeter::GetReading() const
{
	return mMeter ? std::optional(mMeter->GetReading()) : std::nullopt;
}

} // namespace SonaroHost::Otio
