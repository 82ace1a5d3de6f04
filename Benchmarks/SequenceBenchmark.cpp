// Rendering whole sequences from memory: stereo tracks with fader and pan into one master, on one thread, beside a
// plain loop that multiplies and adds the same samples. And making the graph of a very large one.

#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace
{

using namespace SN;
using namespace SonaroHost;

constexpr unsigned kRate = 48000;
// Of all tracks together: much more than any cache holds.
constexpr long long kAllFrames = 1000 * kRate;
constexpr long long kClipFrames = kRate;
constexpr float kGain = 0.7f;
constexpr float kPan = 0.3f;

FrameRate GetRate()
{
	static FrameRate const sRate = FrameRate::FromSamplesPerSecond(kRate);
	return sRate;
}

// A stereo recording in memory: left, then right.
struct Recording
{
	float const* GetChannel(unsigned inChannel) const
	{
		return mSamples.data() + static_cast<std::size_t>(inChannel * mFrames);
	}

	long long mFrames = 0;
	std::vector<float> mSamples;
};

using Recordings = std::vector<std::shared_ptr<Recording const>>;

// Has the processor fetch what the next block is likely to read, while others work on this one: a block is too short for
// the processor to find out by itself how the reading goes on.
void FetchAhead(float const* inSamples, unsigned inCount)
{
	constexpr unsigned kLine = 64 / sizeof(float);
	for (unsigned i = 0; i < inCount; i += kLine)
	{
		__builtin_prefetch(inSamples + i, 0, 2);
	}
}

class MemorySource final : public Implements<MemorySource, IAudioSource>
{
public:
	explicit MemorySource(std::shared_ptr<Recording const> inRecording)
		: mRecording(std::move(inRecording))
	{
	}

	FrameRate GetFrameRate() override { return GetRate(); }
	TickTime GetLength() override { return {mRecording->mFrames, GetRate()}; }
	unsigned GetNumChannels() override { return 2; }
	AudioChannelLayout GetAudioChannelLayout() override { return VX::kAudioChannelLayout_Stereo; }
	ImmutableString GetName() override { return ImmutableString("memory"); }
	void ReadAudio(VX::BinaryData const&, dsp::AudioBuffer& ioBuffer, TickTime const& inTime, bool) override
	{
		long long const first = std::min(inTime.ToFrame64(GetRate()), mRecording->mFrames);
		auto const count =
			static_cast<unsigned>(std::min<long long>(ioBuffer.GetUseSize(), mRecording->mFrames - first));
		for (unsigned channel = 0; channel < 2; ++channel)
		{
			// From the first sample on, as the processor reads ahead: a copy of the C library's begins at the
			// end of what no cache holds.
			zorvaccelerate::utility::MulConstant(
				count, mRecording->GetChannel(channel) + first, 1.0f, ioBuffer.GetChannel(channel));
			FetchAhead(mRecording->GetChannel(channel) + first + count, count);
		}
		ioBuffer.NoteBufferWrite(0, count);
	}

private:
	std::shared_ptr<Recording const> mRecording;
};

// One for each of so many tracks.
Recordings MakeRecordings(std::size_t inTracks)
{
	Recordings recordings;
	while (recordings.size() < inTracks)
	{
		auto const recording = std::make_shared<Recording>();
		recording->mFrames = kAllFrames / static_cast<long long>(inTracks);
		recording->mSamples.resize(static_cast<std::size_t>(2 * recording->mFrames));
		for (std::size_t i = 0; i < recording->mSamples.size(); ++i)
		{
			recording->mSamples[i] = static_cast<float>(i * 2654435761u % 65536) / 65536.0f - 0.5f;
		}
		recordings.push_back(recording);
	}
	return recordings;
}

std::shared_ptr<Sequence::Media const> MakeMedia(std::shared_ptr<Recording const> const& inRecording)
{
	auto const media = std::make_shared<Sequence::Media>();
	media->mFrames = inRecording->mFrames;
	media->mLayout = VX::kAudioChannelLayout_Stereo;
	media->mOpen = [inRecording](FrameRate const&)
	{ return zorvcore::classref::MakeObject<MemorySource>(inRecording); };
	return media;
}

// Clips that lie one behind the other, with fader and pan.
Sequence::Track MakeTrack(
	std::shared_ptr<Sequence::Media const> const& inMedia, long long inClips, long long inClipFrames)
{
	Sequence::Track track;
	track.mLayout = VX::kAudioChannelLayout_Stereo;
	for (long long clip = 0; clip < inClips; ++clip)
	{
		Sequence::Item item;
		item.mStart = TickTime(clip * inClipFrames, GetRate());
		item.mEnd = TickTime((clip + 1) * inClipFrames, GetRate());
		item.mContent = Sequence::Clip{inMedia, clip * inClipFrames % inMedia->mFrames, {}};
		track.mItems.push_back(item);
	}
	track.mChain.mStages.push_back(Sequence::Fader{AutomationParameter<float>::Create(kGain), {}});
	track.mChain.mPan = AutomationParameter<float>::Create(kPan);
	return track;
}

void SetCounters(benchmark::State& ioState)
{
	ioState.counters["per_track_block"] =
		benchmark::Counter(static_cast<double>(ioState.iterations() * ioState.range(0)),
			benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// So many tracks, in blocks of so many samples: one clip each, or so many of a second.
void BM_RenderSequence(benchmark::State& ioState)
{
	auto const blockFrames = static_cast<unsigned>(ioState.range(1));
	long long const clips = ioState.range(2);
	Sequence::Description sequence;
	sequence.mLayout = VX::kAudioChannelLayout_Stereo;
	long long length = 0;
	for (auto const& recording : MakeRecordings(static_cast<std::size_t>(ioState.range(0))))
	{
		long long const clipFrames = clips == 1 ? recording->mFrames : kClipFrames;
		sequence.mTracks.push_back(MakeTrack(MakeMedia(recording), clips, clipFrames));
		length = clips * clipFrames;
	}
	RenderContextScope const context(blockFrames, kTimeMax, ImmutableString("benchmark"));
	Sequence::SequenceGraph const graph(sequence, context.Get(), GetRate());
	InterfaceRef<IAudioGenerator> const generator = graph.GetGenerator();
	generator->InitializeAudioFilters();
	generator->Preroll(kTimeZero, false);
	dsp::AudioBuffer block(2, blockFrames);
	long long frame = 0;
	for (auto _ : ioState)
	{
		generator->GetAudioData(TickTime(frame, GetRate()), block, false);
		benchmark::ClobberMemory();
		frame = frame + 2 * blockFrames <= length ? frame + blockFrames : 0;
	}
	generator->ShutdownAudioFilters();
	SetCounters(ioState);
}

// What cannot be left away: each sample of each track once multiplied and added. The gain of a channel is fader and pan
// in one, so the loop rounds once less for each sample than the sequence, and nothing is looked up or kept in between.
void BM_PlainLoop(benchmark::State& ioState)
{
	auto const blockFrames = static_cast<unsigned>(ioState.range(1));
	Recordings const recordings = MakeRecordings(static_cast<std::size_t>(ioState.range(0)));
	std::vector<float> output(2 * blockFrames);
	float const gains[2] = {kGain, kGain * kPan};
	long long frame = 0;
	for (auto _ : ioState)
	{
		std::fill(output.begin(), output.end(), 0.0f);
		for (auto const& recording : recordings)
		{
			for (unsigned channel = 0; channel < 2; ++channel)
			{
				float const* const in = recording->GetChannel(channel) + frame;
				float* const out = output.data() + channel * blockFrames;
				float const gain = gains[channel];
				for (unsigned i = 0; i < blockFrames; ++i)
				{
					out[i] += gain * in[i];
				}
			}
		}
		benchmark::ClobberMemory();
		frame = frame + 2 * blockFrames <= recordings[0]->mFrames ? frame + blockFrames : 0;
	}
	SetCounters(ioState);
}

// The graph of so many tracks with so many clips each; megabytes: the most that the process has held so far.
void BM_MakeGraph(benchmark::State& ioState)
{
	auto const recording = std::make_shared<Recording>();
	recording->mFrames = kClipFrames;
	Sequence::Description sequence;
	sequence.mLayout = VX::kAudioChannelLayout_Stereo;
	sequence.mTracks.assign(static_cast<std::size_t>(ioState.range(0)),
		MakeTrack(MakeMedia(recording), ioState.range(1), kClipFrames));
	// Freeing them is another matter.
	std::optional<RenderContextScope> context;
	std::optional<Sequence::SequenceGraph> graph;
	for (auto _ : ioState)
	{
		context.emplace(512u, kTimeMax, ImmutableString("benchmark"));
		graph.emplace(sequence, context->Get(), GetRate());
	}
	rusage usage{};
	getrusage(RUSAGE_SELF, &usage);
	ioState.counters["megabytes"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
}

BENCHMARK(BM_MakeGraph)->Args({1000, 1000})->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(BM_PlainLoop)->ArgsProduct({{8, 32, 128}, {512, 2048}});
BENCHMARK(BM_RenderSequence)->ArgsProduct({{8, 32, 128}, {512, 2048}, {1}});
BENCHMARK(BM_RenderSequence)->Args({32, 2048, 30})->Args({32, 2048, 1000});

} // namespace
