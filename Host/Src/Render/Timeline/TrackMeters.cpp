#include "TrackMeters.h"

#include "ProgrammeMeter.h"

namespace SonaroHost::Otio
{

TrackMeters::TrackMeters() = default;

TrackMeters::~TrackMeters() = default;

SN::InterfaceRef<SN::IAudioMeterSetter> TrackMeters::Make(TrackRow const& inRow)
{
	auto const meter = zorvcore::classref::MakeObject<ProgrammeMeter>(inRow.mLayout);
	mMeters.insert_or_assign(inRow.mPlace, meter);
	return meter;
}

void TrackMeters::Begin(SN::FrameRate const& inFrameRate)
{
	auto const bank = std::make_shared<LoudnessBank>(inFrameRate.GetSamplesPerSecond());
	for (auto const& [place, meter] : mMeters)
	{
		meter->Share(bank);
		meter->Init(inFrameRate, 0);
	}
}

std::vector<std::optional<LoudnessReading>> TrackMeters::GetReadings(
	std::vector<TrackRow> const& inRows) const
{
	std::vector<std::optional<LoudnessReading>> readings;
	for (TrackRow const& row : inRows)
	{
		auto const found = mMeters.find(row.mPlace);
		readings.push_back(found == mMeters.end() ? std::nullopt : found->second->GetReading());
	}
	return readings;
}

} // namespace SonaroHost::Otio
