#include "SonaroHost/Waveform/Waveform.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

Waveform MergeChannels(Waveform const& inWaveform)
{
	Waveform merged{inWaveform.mSampleRate, inWaveform.mSamplesPerColumn, {}};
	std::vector<float>& values = merged.mChannels.emplace_back();
	values.reserve(inWaveform.GetNumColumns() * Waveform::kValuesPerColumn);
	std::size_t const channels = inWaveform.mChannels.size();
	for (std::size_t i = 0; i < inWaveform.GetNumColumns(); ++i)
	{
		Waveform::Column all = inWaveform.GetColumn(0, i);
		double squares = 0.0;
		for (std::size_t channel = 0; channel < channels; ++channel)
		{
			Waveform::Column const column = inWaveform.GetColumn(channel, i);
			all.mMinimum = std::min(all.mMinimum, column.mMinimum);
			all.mMaximum = std::max(all.mMaximum, column.mMaximum);
			squares += static_cast<double>(column.mRms) * static_cast<double>(column.mRms);
		}
		all.mRms = static_cast<float>(std::sqrt(squares / static_cast<double>(channels)));
		values.insert(values.end(), {all.mMinimum, all.mMaximum, all.mRms});
	}
	return merged;
}

} // namespace SonaroHost
