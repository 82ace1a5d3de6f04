// Pulling a stereo block through a stream and a clip, beside the bare copies that this makes, and the
// making of the graph of one clip.

#include "Sonaro/GraphFactory.h"
#include "Sonaro/IAudioSourceFile.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace
{

using namespace SN;

constexpr FrameRate k48000Hz{5292000};
constexpr unsigned kLargestBlock = 4096;

// A stereo file of ten minutes that lies in memory, one block repeated.
class MemorySource final : public Implements<MemorySource, IAudioSource, IAudioSourceFile>
{
public:
	FrameRate GetFrameRate() override { return k48000Hz; }
	TickTime GetLength() override { return {28800000, k48000Hz}; }
	unsigned GetNumChannels() override { return 2; }
	AudioChannelLayout GetAudioChannelLayout() override
	{
		return zorvmediatypes::CreateStereoChannelLayout();
	}
	ImmutableString GetName() override { return {}; }
	void ReadAudio(VX::BinaryData const&, dsp::AudioBuffer& inBuffer, TickTime const&, bool) override
	{
		inBuffer.CopyFrom(mBlock, inBuffer.GetUseSize());
	}

	bool IsGrowing() override { return false; }
	ImmutableString GetPath() override { return {}; }
	unsigned GetRevision() override { return 0; }
	TickTime GetDuration() override { return GetLength(); }

private:
	dsp::AudioBuffer mBlock{2, kLargestBlock};
};

struct Graph
{
	Graph() = default;
	~Graph() { mContext->Clear(); }
	Graph(Graph const&) = delete;
	Graph& operator=(Graph const&) = delete;

	InterfaceRef<IAudioGenerator> MakeStream(int inChannelIndex) const
	{
		return mFactory.CreateAudioStreamRenderer({
			.mContext = mContext,
			.mFrameRate = k48000Hz,
			.mSource = mSource,
			.mChannelIndex = inChannelIndex,
		});
	}

	InterfaceRef<IAudioGenerator> MakeClip() const
	{
		return mFactory.CreateAudioClipRenderer({
			.mContext = mContext,
			.mFrameRate = k48000Hz,
			.mGenerators = {{MakeStream(AudioStreamSettings::kAllChannels), {{0, 0}, {1, 1}}}},
			.mChannelLayout = mLayout,
			.mStartOffset = TickTime(1000, k48000Hz),
		});
	}

	GraphFactory<> mFactory;
	InterfaceRef<IAudioRenderContext> mContext =
		mFactory.CreateAudioRenderContext({.mMaxBlockSize = kLargestBlock});
	InterfaceRef<IAudioSource> mSource = zorvcore::classref::MakeObject<MemorySource>();
	AudioChannelLayout mLayout = zorvmediatypes::CreateStereoChannelLayout();
};

// What a pull through stream and clip moves: the source into the scratch, the scratch into the block.
void BM_BareCopies(benchmark::State& ioState)
{
	auto const samples = static_cast<unsigned>(ioState.range(0));
	dsp::AudioBuffer source(2, samples);
	dsp::AudioBuffer scratch(2, samples);
	dsp::AudioBuffer block(2, samples);
	for (auto _ : ioState)
	{
		for (unsigned channel = 0; channel < 2; ++channel)
		{
			zorvaccelerate::utility::Copy(samples, source.GetChannel(channel), scratch.GetChannel(channel));
			zorvaccelerate::utility::Copy(samples, scratch.GetChannel(channel), block.GetChannel(channel));
		}
		benchmark::ClobberMemory();
	}
}

void Pull(benchmark::State& ioState, IAudioGenerator& ioGenerator)
{
	auto const samples = static_cast<unsigned>(ioState.range(0));
	dsp::AudioBuffer block(2, samples);
	TickTime time;
	for (auto _ : ioState)
	{
		ioGenerator.GetAudioData(time, block, false);
		benchmark::ClobberMemory();
	}
}

void BM_PullStream(benchmark::State& ioState)
{
	Graph const graph;
	Pull(ioState, *graph.MakeStream(AudioStreamSettings::kAllChannels));
}

void BM_PullOneChannelOfAStream(benchmark::State& ioState)
{
	Graph const graph;
	Pull(ioState, *graph.MakeStream(1));
}

void BM_PullStreamAndClip(benchmark::State& ioState)
{
	Graph const graph;
	Pull(ioState, *graph.MakeClip());
}

void BM_BuildClip(benchmark::State& ioState)
{
	Graph const graph;
	std::vector<InterfaceRef<IAudioGenerator>> clips;
	for (auto _ : ioState)
	{
		clips.push_back(graph.MakeClip());
		if (clips.size() == 1000)
		{
			clips.clear();
		}
	}
}

BENCHMARK(BM_BareCopies)->Arg(64)->Arg(256)->Arg(512)->Arg(4096);
BENCHMARK(BM_PullStream)->Arg(64)->Arg(256)->Arg(512)->Arg(4096);
BENCHMARK(BM_PullOneChannelOfAStream)->Arg(64)->Arg(256)->Arg(512)->Arg(4096);
BENCHMARK(BM_PullStreamAndClip)->Arg(64)->Arg(256)->Arg(512)->Arg(4096);
BENCHMARK(BM_BuildClip);

} // namespace
