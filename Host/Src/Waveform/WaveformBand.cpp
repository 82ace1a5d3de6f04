#include "WaveformBand.h"

#include "SonaroHost/Waveform/Waveform.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cmath>

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
	double const columnFrames = static_cast<double>(mGrid.mFramesPerColumn);
	double const start = mGrid.mFirstFrame + static_cast<double>(inFirstFrame) * mGrid.mStep;
	unsigned const frames = inBuffer.GetUseSize();
	// Exact where frames are those of the programme: all numbers are whole then.
	auto const findColumn = [&](unsigned inFrame)
	{ return std::floor((start + inFrame * mGrid.mStep) / columnFrames); };
	for (unsigned first = 0; first < frames;)
	{
		double const column = findColumn(first);
		double const left = mGrid.mStep > 0.0 ? (column + 1.0) * columnFrames - (start + first * mGrid.mStep)
											  : start + first * mGrid.mStep - column * columnFrames;
		auto const count = static_cast<unsigned>(
			std::clamp(std::ceil(left / std::abs(mGrid.mStep)), 1.0, static_cast<double>(frames - first)));
		AddPiece(inBuffer, first, first + count, column);
		first += count;
	}
}

void WaveformBand::AddPiece(
	dsp::AudioBuffer const& inBuffer, unsigned inFirst, unsigned inEnd, double inPlace)
{
	if (!(inPlace >= 0.0 && inPlace < static_cast<double>(mColumns.size())))
	{
		return;
	}
	PeakColumn& column = mColumns[static_cast<std::size_t>(inPlace)];
	for (unsigned channel = 0; channel < inBuffer.GetNumChannels(); ++channel)
	{
		column.Add(inBuffer.IsChannelSilent(channel) ? nullptr : inBuffer.GetChannel(channel) + inFirst,
			inEnd - inFirst);
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
