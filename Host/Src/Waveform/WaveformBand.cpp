#include "WaveformBand.h"

#include "SonaroHost/Waveform/Waveform.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SonaroHost
{

void WaveformBand::SetGrid(Grid const& inGrid)
{
	mGrid = inGrid;
	mColumns.assign(
		static_cast<std::size_t>((mGrid.mFrames + mGrid.mFramesPerColumn - 1) / mGrid.mFramesPerColumn),
		PeakColumn());
}

void WaveformBand::Add(dsp::AudioBuffer const& inBuffer, std::int64_t inFirstFrame)
{
	std::int64_t const offset = inFirstFrame - mGrid.mFirstFrame;
	std::int64_t const end = std::min<std::int64_t>(offset + inBuffer.GetUseSize(), mGrid.mFrames);
	for (std::int64_t frame = std::max<std::int64_t>(offset, 0); frame < end;)
	{
		std::int64_t const index = frame / mGrid.mFramesPerColumn;
		std::int64_t const pieceEnd = std::min(end, (index + 1) * mGrid.mFramesPerColumn);
		auto const count = static_cast<unsigned>(pieceEnd - frame);
		PeakColumn& column = mColumns[static_cast<std::size_t>(index)];
		for (unsigned channel = 0; channel < inBuffer.GetNumChannels(); ++channel)
		{
			column.Add(
				inBuffer.IsChannelSilent(channel) ? nullptr : inBuffer.GetChannel(channel) + (frame - offset),
				count);
		}
		frame = pieceEnd;
	}
}

std::vector<float> WaveformBand::GetValues() const
{
	std::vector<float> values;
	values.reserve(mColumns.size() * Waveform::kValuesPerColumn);
	for (PeakColumn const& column : mColumns)
	{
		values.insert(values.end(), {column.GetMinimum(), column.GetMaximum(), column.GetRms()});
	}
	return values;
}

void WaveformBand::SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const& inTime)
{
	Add(inBuffer, inTime.ToFrame64(mGrid.mFrameRate));
}

} // namespace SonaroHost
