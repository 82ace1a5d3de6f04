#include "TrackMeters.h"

#include "zorvaccelerate/Metering.h"

#include <algorithm>

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
	return mMeter ? std::optional(mMeter->GetReadingAtEnd()) : std::nullopt;
}

// A group has a bank of its own. Small ones would leave lanes of it empty.
TrackMeters::TrackMeters(std::vector<PlannedTrack> const& inTracks, int inSampleRate,
	LoudnessMeter::Windows inWindows, std::size_t inGroups)
{
	std::size_t channels = 0;
	for (PlannedTrack const& track : inTracks)
	{
		channels += track.mOrigin.empty() ? 0 : track.mLayout.size();
	}
	std::size_t const most =
		std::max<std::size_t>((channels + inGroups - 1) / inGroups, zorvaccelerate::utility::kFilterLanes);
	std::shared_ptr<LoudnessBank> bank;
	std::size_t taken = most;
	for (PlannedTrack const& track : inTracks)
	{
		if (!track.mOrigin.empty() && taken >= most)
		{
			bank = std::make_shared<LoudnessBank>(inSampleRate);
			mGroups.emplace_back();
			taken = 0;
		}
		SN::InterfaceRef<ProgrammeMeter>& meter = mMeters.emplace_back();
		if (!track.mOrigin.empty())
		{
			meter =
				zorvcore::classref::MakeObject<ProgrammeMeter>(track.mLayout, inSampleRate, inWindows, bank);
			mTaps.emplace(track.mOrigin, meter);
			mGroups.back().push_back(track.mOrigin);
			taken += track.mLayout.size();
		}
	}
}

std::vector<std::optional<LoudnessReading>> TrackMeters::GetReadings() const
{
	std::vector<std::optional<LoudnessReading>> readings;
	readings.reserve(mMeters.size());
	for (SN::InterfaceRef<ProgrammeMeter> const& meter : mMeters)
	{
		readings.push_back(meter ? meter->GetReading() : std::nullopt);
	}
	return readings;
}

} // namespace SonaroHost
