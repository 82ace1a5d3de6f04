// Reading back what was rendered ahead, beside the bare copy that this makes.

#include "AudioRender/Source/AudioGeneratorSource.h"
#include "Sonaro/SonaroFactory.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <benchmark/benchmark.h>

namespace
{

using namespace SN;

constexpr FrameRate k48000Hz{5292000};
constexpr unsigned kFrames = 512;

// A tone of one value, so that nothing is silent.
class Tone final : public IAudioGenerator, public IAudioGeneratorPrivate
{
public:
	InterfaceRef<IAudioGenerator> Clone() override { return {}; }
	bool HasHistory() override { return false; }
	TickTime GetDelay() override { return kTimeZero; }
	void Preroll(TickTime const&, bool) override {}
	void FillInitialDelay(TickTime const&, TickTime const&, bool, bool) override {}
	void AccumulatePrefetchRequests(PrefetchRange const&, PrefetchType, PrefetchRequestAccumulator&) override
	{
	}
	void GetAudioData(TickTime const&, dsp::AudioBuffer& inBuffer, bool) override
	{
		inBuffer.ClearSilenceFlags(dsp::SilenceFlags::All());
	}
	void Reset() override {}
	void InitializeAudioFilters() override {}
	void ShutdownAudioFilters() override {}
	unsigned GetNumChannels() override { return 2; }
	unsigned GetNumOutputChannels() override { return 2; }
	AudioChannelLayout GetAudioChannelLayout() override
	{
		return zorvmediatypes::CreateStereoChannelLayout();
	}
	FrameRate GetGeneratorFrameRate() override { return k48000Hz; }

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		void* const found =
			zorvcore::classref::QueryInterfaces<IAudioGenerator, IAudioGeneratorPrivate>(this, inIdentifier);
		return found ? found : Unknown::QueryMap(inIdentifier);
	}
};

constexpr long long kLength = 64 * kFrames;

// Blocks that begin in the middle of a chunk for an offset, so that each touches two.
void BM_ReadPrefetchedAudio(benchmark::State& ioState)
{
	auto const source = AudioGeneratorSource::Create(
		zorvcore::classref::MakeObject<Tone>(), 4 * kFrames, TickTime(kLength, k48000Hz));
	source->PrefetchAudioData(0, kTimeZero, static_cast<unsigned>(kLength));
	dsp::AudioBuffer buffer(2, kFrames);
	long long frame = ioState.range(0);
	for (auto _ : ioState)
	{
		source->ReadPrefetchedAudio(TickTime(frame, k48000Hz), buffer);
		benchmark::ClobberMemory();
		frame = frame + 5 * kFrames < kLength ? frame + 4 * kFrames : ioState.range(0);
	}
}

void BM_BareStereoCopy(benchmark::State& ioState)
{
	dsp::AudioBuffer source(2, static_cast<unsigned>(kLength));
	dsp::AudioBuffer buffer(2, kFrames);
	long long frame = 0;
	for (auto _ : ioState)
	{
		for (unsigned channel = 0; channel < 2; ++channel)
		{
			zorvaccelerate::utility::Copy(
				kFrames, source.GetChannel(channel) + frame, buffer.GetChannel(channel));
		}
		benchmark::ClobberMemory();
		frame = frame + 5 * kFrames < kLength ? frame + 4 * kFrames : 0;
	}
}

BENCHMARK(BM_BareStereoCopy);
BENCHMARK(BM_ReadPrefetchedAudio)->Arg(0)->Arg(4 * kFrames - 100);

} // namespace
