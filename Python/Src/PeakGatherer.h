#pragma once

#include "Samples.h"
#include "SonaroHost/Waveform/PeakColumn.h"

#include <cstdint>
#include <vector>

namespace SonaroPython
{

// Columns of a waveform of samples that come one after the other: minimum, maximum and RMS of so many each.
class PeakGatherer
{
public:
	PeakGatherer(unsigned inChannels, std::int64_t inSamplesPerColumn);

	void Add(SampleArray const& inSamples);
	// inPlaces: where each channel stands in a frame.
	void AddInterleaved(float const* inSamples, std::vector<unsigned> const& inPlaces, unsigned inFrames);
	// The columns of the shape (channels, columns, 3); the last one may stand for fewer samples. Once.
	pybind11::array_t<float> Finish();

private:
	// Up to so many frames of the column at hand.
	unsigned GetRoom(std::int64_t inFrames) const;
	void Count(unsigned inFrames);
	void EndColumn();

	std::int64_t mSamplesPerColumn;
	std::int64_t mFrames = 0;
	std::vector<SonaroHost::PeakColumn> mColumns;
	// The values of ended columns, of one channel each.
	std::vector<std::vector<float>> mValues;
	std::vector<float> mScratch;
};

} // namespace SonaroPython
