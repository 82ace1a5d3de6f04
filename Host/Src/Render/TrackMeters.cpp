#include "TrackMeters.h"

namespace SonaroHost
{

ProgrammeMeter::ProgrammeMeter(SN::AudioChannelLayout const& inLayout, int inSampleRate,
	LoudnessMeter::Windows inWindows, std::shared_ptr<LoudnessBank> const& inBank)
{
	if (LoudnessMeter::CanMeasure(inLayout, inSampleRate))
	{
		mMeter.emplace(inLayout, inSampleRate, LoudnessMeter::Memory::kGrowing, inWindows, inBank);
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

TrackMeters::TrackMeters(
	std::vector<PlannedTrack> const& inTracks, int inSampleRate, LoudnessMeter::Windows inWindows)
{
	auto const bank = std::make_shared<LoudnessBank>(inSampleRate);
	for (PlannedTrack const& track : inTracks)
	{
		SN::InterfaceRef<ProgrammeMeter>& meter = mMeters.emplace_back();
		if (!track.mOrigin.empty())
		{
			meter =
				zorvcore::classref::MakeObject<ProgrammeMeter>(track.mLayout, inSampleRate, inWindows, bank);
			mTaps.emplace(track.mOrigin, meter);
		}
	}
}

std::vector<std::optional<LoudnessReading>> TrackMeters::GetReadings() const
{
	std::vector<std::optional<LoudnessReading>> readings;
	for (SN::InterfaceRef<ProgrammeMeter> const& meter : mMeters)
	{
		readings.push_back(meter ? meter->GetReading() : std::nullopt);
	}
	return readings;
}

} // namespace SonaroHost
