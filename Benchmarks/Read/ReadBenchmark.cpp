// Reads a timeline from start to end in blocks of 4096 samples: by pulling its graph, and by the reader that Python's read
// stands on. Prints the least nanoseconds of a block of either, of so many passes. Usage: read_benchmark TIMELINE PASSES
// read_benchmark.py runs it beside Python.

#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Render/TimelineProgramme.h"
#include "SonaroHost/Serve/ProgrammeReader.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <vector>

namespace
{

using namespace SonaroHost;

constexpr unsigned kBlock = 4096;

// Nanoseconds of a block in the quickest pass.
double Measure(int inPasses, std::int64_t inFrames, std::function<void(std::int64_t inFirst)> const& inRead)
{
	double least = std::numeric_limits<double>::infinity();
	for (int pass = 0; pass < inPasses; ++pass)
	{
		auto const start = std::chrono::steady_clock::now();
		for (std::int64_t first = 0; first < inFrames; first += kBlock)
		{
			inRead(first);
		}
		std::chrono::duration<double, std::nano> const taken = std::chrono::steady_clock::now() - start;
		least = std::min(least, taken.count() * kBlock / static_cast<double>(inFrames));
	}
	return least;
}

double MeasurePull(Programme const& inProgramme, int inPasses)
{
	RenderContextScope const context(kBlock, SN::kTimeMax, SN::ImmutableString("pull"));
	auto const graph = MakeGraph(inProgramme, context.Get());
	SN::FrameRate const rate = inProgramme.GetFrameRate();
	dsp::AudioBuffer block(graph.GetLayout().size(), kBlock);
	auto const pull = [&](std::int64_t inFirst)
	{
		SN::TickTime const time(inProgramme.mFirstFrame + inFirst, rate);
		if (inFirst == 0)
		{
			graph.GetGenerator()->Preroll(time, false);
		}
		graph.GetGenerator()->GetAudioData(time, block, false);
	};
	return Measure(inPasses, inProgramme.mFrames, pull);
}

double MeasureRead(Programme const& inProgramme, int inPasses)
{
	Serve::ProgrammeReader reader(inProgramme, 1, 1e7);
	std::size_t const channels = inProgramme.GetLayout().size();
	std::vector<float> samples(channels * kBlock);
	std::vector<float*> pointers;
	for (std::size_t channel = 0; channel < channels; ++channel)
	{
		pointers.push_back(samples.data() + channel * kBlock);
	}
	return Measure(inPasses, inProgramme.mFrames,
		[&](std::int64_t inFirst) {
			reader.Read({}, {inFirst, kBlock}, pointers);
		});
}

} // namespace

int main(int inCount, char** inArguments)
{
	if (inCount != 3)
	{
		std::fputs("Usage: read_benchmark TIMELINE PASSES\n", stderr);
		return 2;
	}
	Otio::TimelineInput input(inArguments[1]);
	Otio::TimelineSequence const sequence = input.MakeSequence();
	Programme const programme = Otio::MakeProgramme(sequence, input.GetMedia());
	int const passes = std::max(std::atoi(inArguments[2]), 1);
	double const pull = MeasurePull(programme, passes);
	std::printf("%.0f %.0f\n", pull, MeasureRead(programme, passes));
}
