#include "Samples.h"

#include "Terminal/Caller.h"

#include <algorithm>
#include <atomic>

namespace py = pybind11;

namespace SonaroPython
{

namespace
{

constexpr py::ssize_t kBlockFrames = 4096;

std::atomic<bool> sHaveCallsEnded{false};

} // namespace

std::vector<float const*> GetChannels(SampleArray const& inSamples)
{
	std::vector<float const*> channels;
	for (py::ssize_t channel = 0; channel < inSamples.shape(0); ++channel)
	{
		channels.push_back(inSamples.data() + channel * inSamples.shape(1));
	}
	return channels;
}

SampleArray ToArray(std::vector<std::vector<float>> const& inSamples)
{
	std::size_t const frames = inSamples.empty() ? 0 : inSamples.front().size();
	SampleArray array({static_cast<py::ssize_t>(inSamples.size()), static_cast<py::ssize_t>(frames)});
	float* out = array.mutable_data();
	for (std::vector<float> const& channel : inSamples)
	{
		out = std::copy(channel.begin(), channel.end(), out);
	}
	return array;
}

void ForEachBlock(
	SampleArray const& inSamples, std::function<void(dsp::AudioBuffer const& inBlock)> const& inTake)
{
	std::vector<float const*> const channels = GetChannels(inSamples);
	py::ssize_t const frames = inSamples.shape(1);
	py::gil_scoped_release const release;
	SignalListener listen;
	dsp::AudioBuffer block(channels.size(), static_cast<unsigned>(kBlockFrames));
	for (py::ssize_t first = 0; first < frames; first += kBlockFrames)
	{
		py::ssize_t const count = std::min(kBlockFrames, frames - first);
		block.SetUseSize(static_cast<unsigned>(count));
		for (std::size_t channel = 0; channel < channels.size(); ++channel)
		{
			std::copy_n(channels[channel] + first, count, block.GetChannel(channel));
		}
		block.NoteBufferWrite(0, static_cast<unsigned>(count));
		inTake(block);
		listen();
	}
}

void SignalListener::operator()()
{
	auto const now = Clock::now();
	if (now < mNext)
	{
		return;
	}
	ThrowIfEnded();
	mNext = now + std::chrono::milliseconds(100);
	py::gil_scoped_acquire const acquire;
	if (PyErr_CheckSignals() != 0)
	{
		throw py::error_already_set();
	}
}

void SignalListener::EndCalls()
{
	sHaveCallsEnded = true;
}

void SignalListener::ThrowIfEnded()
{
	if (sHaveCallsEnded)
	{
		throw SonaroCommand::CommandStopped();
	}
}

} // namespace SonaroPython
