#include "PeakGatherer.h"

#include <algorithm>

namespace py = pybind11;

namespace SonaroPython
{

namespace
{

constexpr py::ssize_t kValues = 3;

} // namespace

PeakGatherer::PeakGatherer(unsigned inChannels, std::int64_t inSamplesPerColumn)
	: mSamplesPerColumn(std::max<std::int64_t>(inSamplesPerColumn, 1)),
	  mColumns(inChannels),
	  mValues(inChannels)
{
}

void PeakGatherer::Add(SampleArray const& inSamples)
{
	ForEachBlock(inSamples,
		[this](dsp::AudioBuffer const& inBlock)
		{
			for (unsigned first = 0; first < inBlock.GetUseSize();)
			{
				unsigned const count = GetRoom(inBlock.GetUseSize() - first);
				for (std::size_t channel = 0; channel < mColumns.size(); ++channel)
				{
					mColumns[channel].Add(inBlock.GetChannel(channel) + first, count);
				}
				first += count;
				Count(count);
			}
		});
}

void PeakGatherer::AddInterleaved(
	float const* inSamples, std::vector<unsigned> const& inPlaces, unsigned inFrames)
{
	std::size_t const stride = inPlaces.size();
	for (unsigned first = 0; first < inFrames;)
	{
		unsigned const count = GetRoom(inFrames - first);
		mScratch.resize(count);
		for (std::size_t channel = 0; channel < stride; ++channel)
		{
			float const* in = inSamples + first * stride + inPlaces[channel];
			for (float& sample : mScratch)
			{
				sample = *in;
				in += stride;
			}
			mColumns[channel].Add(mScratch.data(), count);
		}
		first += count;
		Count(count);
	}
}

py::array_t<float> PeakGatherer::Finish()
{
	EndColumn();
	auto const columns = static_cast<py::ssize_t>(mValues.empty() ? 0 : mValues.front().size()) / kValues;
	py::array_t<float> array({static_cast<py::ssize_t>(mValues.size()), columns, kValues});
	float* out = array.mutable_data();
	for (std::vector<float> const& values : mValues)
	{
		out = std::copy(values.begin(), values.end(), out);
	}
	return array;
}

unsigned PeakGatherer::GetRoom(std::int64_t inFrames) const
{
	return static_cast<unsigned>(std::min(inFrames, mSamplesPerColumn - mFrames));
}

void PeakGatherer::Count(unsigned inFrames)
{
	mFrames += inFrames;
	if (mFrames == mSamplesPerColumn)
	{
		EndColumn();
	}
}

void PeakGatherer::EndColumn()
{
	for (std::size_t channel = 0; mFrames > 0 && channel < mColumns.size(); ++channel)
	{
		SonaroHost::PeakColumn& column = mColumns[channel];
		mValues[channel].insert(
			mValues[channel].end(), {column.GetMinimum(), column.GetMaximum(), column.GetRms()});
		column = {};
	}
	mFrames = 0;
}

} // namespace SonaroPython
