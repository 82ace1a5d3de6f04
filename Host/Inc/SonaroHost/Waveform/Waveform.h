#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace SonaroHost
{

// A waveform that was computed.
struct Waveform
{
	static constexpr std::size_t kValuesPerColumn = 3;

	// What a channel has in a column; linear, 1 being full scale.
	struct Column
	{
		// The lowest sample.
		float mMinimum = 0.0f;
		// The highest sample.
		float mMaximum = 0.0f;
		// The root of the mean square.
		float mRms = 0.0f;
	};

	std::size_t GetNumColumns() const
	{
		return mChannels.empty() ? 0 : mChannels[0].size() / kValuesPerColumn;
	}
	Column GetColumn(std::size_t inChannel, std::size_t inColumn) const
	{
		float const* const values = mChannels[inChannel].data() + inColumn * kValuesPerColumn;
		return {values[0], values[1], values[2]};
	}

	// Of the sound, in Hz.
	int mSampleRate = 0;
	// The last column may have fewer.
	std::int64_t mSamplesPerColumn = 0;
	// The columns of each channel, as in an IAudioWaveformBuffer.
	std::vector<std::vector<float>> mChannels;
};

// What several columns of several channels show together: their extremes, and the RMS of all their samples.
Waveform::Column Join(Waveform const& inWaveform, std::size_t inFirstChannel, std::size_t inEndChannel,
	std::size_t inFirstColumn, std::size_t inEndColumn);

// One channel that shows all: the extremes of all channels, and the RMS of all their samples.
Waveform MergeChannels(Waveform const& inWaveform);

} // namespace SonaroHost
