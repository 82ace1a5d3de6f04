#include "SonaroHost/Waveform/Waveform.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

Waveform::Column Join(Waveform const& inWaveform, std::size_t inFirstChannel, std::size_t inEndChannel,
	std::size_t inFirstColumn, std::size_t inEndColumn)
{
	Waveform::Column joined = inWaveform.GetColumn(inFirstChannel, inFirstColumn);
	double squares = 0.0;
	for (std::size_t channel = inFirstChannel; channel < inEndChannel; ++channel)
	{
		for (std::size_t i = inFirstColumn; i < inEndColumn; ++i)
		{
			Waveform::Column const column = inWaveform.GetColumn(channel, i);
			joined.mMinimum = std::min(joined.mMinimum, column.mMinimum);
			joined.mMaximum = std::max(joined.mMaximum, column.mMaximum);
			squares += static_cast<double>(column.mRms) * static_cast<double>(column.mRms);
		}
	}
	std::size_t const count = (inEndChannel - inFirstChannel) * (inEndColumn - inFirstColumn);
	joined.mRms = static_cast<float>(std::sqrt(squares / static_cast<double>(count)));
	return joined;
}

Waveform MergeChannels(Waveform const& inWaveform)
{
	Waveform merged{inWaveform.mSampleRate, inWaveform.mSamplesPerColumn, {}};
	std::vector<float>& values = merged.mChannels.emplace_back();
	values.reserve(inWaveform.GetNumColumns() * Waveform::kValuesPerColumn);
	for (std::size_t i = 0; i < inWaveform.GetNumColumns(); ++i)
	{
		Waveform::Column const all = Join(inWaveform, 0, inWaveform.mChannels.size(), i, i + 1);
		values.insert(values.end(), {all.mMinimum, all.mMaximum, all.mRms});
	}
	return merged;
}

} // namespace SonaroHost
