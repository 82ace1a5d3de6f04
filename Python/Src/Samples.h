#pragma once

#include "zorvaudiodsp/AudioBuffer.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <vector>

#include <pybind11/numpy.h>

namespace SonaroPython
{

// Samples of the shape (channels, frames) in one piece of memory.
using SampleArray = pybind11::array_t<float, pybind11::array::c_style | pybind11::array::forcecast>;

// The channels of an array, as long as it lives.
std::vector<float const*> GetChannels(SampleArray const& inSamples);
SampleArray ToArray(std::vector<std::vector<float>> const& inSamples);

// Hands an array on in blocks, without the interpreter's lock. inTake may throw.
void ForEachBlock(
	SampleArray const& inSamples, std::function<void(dsp::AudioBuffer const& inBlock)> const& inTake);

// Lets the interpreter hear its signals at times, called by a thread that does not hold its lock. Throws what a handler
// throws.
//
// Once all calls are to end, it throws a CommandStopped.
class SignalListener
{
public:
	void operator()();

	// Ends what listens, on all threads. Threads: any.
	static void EndCalls();
	// Throws a CommandStopped where calls are to end. Threads: any.
	static void ThrowIfEnded();

private:
	using Clock = std::chrono::steady_clock;

	Clock::time_point mNext = Clock::now() + std::chrono::milliseconds(100);
};

// Reads samples of what has the functions of OpenTimeline. Throws what they throw.
template <class Programme>
SampleArray ReadSamples(Programme& ioProgramme, std::int64_t inFirst, std::int64_t inFrames, unsigned inTrack)
{
	unsigned const count = ioProgramme.GetNumChannels();
	SampleArray samples({static_cast<pybind11::ssize_t>(count), static_cast<pybind11::ssize_t>(inFrames)});
	std::vector<float*> channels(count);
	for (unsigned channel = 0; channel < count; ++channel)
	{
		channels[channel] = samples.mutable_data() + channel * inFrames;
	}
	pybind11::gil_scoped_release const release;
	ioProgramme.Read(inFirst, inFrames, inTrack, channels, SignalListener());
	return samples;
}

} // namespace SonaroPython
