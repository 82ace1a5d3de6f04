// Conversions, panners and routers at 512 samples. Each stands beside a bare copy of as many bytes as it
// must read and write, and the kernels beside the same sums compiled for one sample at a time.

#include "Sonaro/AudioChannelMix.h"
#include "Sonaro/GraphFactory.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Support/FakeParameter.h"
#include "zorvaccelerate/ChannelMixing.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

using namespace SN;
using namespace SN::Testing;

constexpr unsigned kFrames = 512;

void Fill(dsp::AudioBuffer& outBuffer)
{
	for (unsigned channel = 0; channel < outBuffer.GetNumChannels(); ++channel)
	{
		std::fill_n(outBuffer.GetChannel(channel), kFrames, 0.1f + 0.01f * static_cast<float>(channel));
	}
}

void CountBytes(benchmark::State& ioState, unsigned inChannels)
{
	ioState.SetBytesProcessed(static_cast<std::int64_t>(ioState.iterations()) * kFrames * inChannels *
							  static_cast<std::int64_t>(sizeof(float)));
}

// As many bytes read and written in all as so many channels have.
void BM_BareCopy(benchmark::State& ioState)
{
	auto const channels = static_cast<unsigned>(ioState.range(0));
	dsp::AudioBuffer from(1, kFrames * channels / 2);
	dsp::AudioBuffer to(1, kFrames * channels / 2);
	for (auto _ : ioState)
	{
		zorvaccelerate::utility::Copy(kFrames * channels / 2, from.GetChannel(0), to.GetChannel(0));
		benchmark::ClobberMemory();
	}
	CountBytes(ioState, channels);
}

void RunMix(benchmark::State& ioState, AudioChannelLayout const& inInput, AudioChannelLayout const& inOutput)
{
	auto const mix = AudioChannelMix::GetMixFunction(inInput, inOutput);
	dsp::AudioBuffer input(inInput.size(), kFrames);
	dsp::AudioBuffer output(inOutput.size(), kFrames);
	Fill(input);
	for (auto _ : ioState)
	{
		mix(input, output);
		benchmark::ClobberMemory();
	}
}

// The mixdown type, to mono or stereo; the bytes are those of the channels that it reads and writes.
void BM_Fold(benchmark::State& ioState)
{
	constexpr unsigned kRead[] = {3, 5, 4, 6};
	auto const type = static_cast<unsigned>(ioState.range(0));
	bool const toStereo = ioState.range(1) == 2;
	AudioChannelMix::Set51MixdownType(type);
	RunMix(ioState, VX::kAudioChannelLayout_51,
		toStereo ? VX::kAudioChannelLayout_Stereo : VX::kAudioChannelLayout_Mono);
	AudioChannelMix::Set51MixdownType(AudioChannelMix::kMixdownFront);
	CountBytes(ioState, kRead[type - 1] + static_cast<unsigned>(ioState.range(1)));
}

void BM_StereoToMono(benchmark::State& ioState)
{
	RunMix(ioState, VX::kAudioChannelLayout_Stereo, VX::kAudioChannelLayout_Mono);
	CountBytes(ioState, 3);
}

void BM_MonoToStereo(benchmark::State& ioState)
{
	RunMix(ioState, VX::kAudioChannelLayout_Mono, VX::kAudioChannelLayout_Stereo);
	CountBytes(ioState, 3);
}

void BM_StereoTo51ByMatrix(benchmark::State& ioState)
{
	RunMix(ioState, VX::kAudioChannelLayout_Stereo, VX::kAudioChannelLayout_51);
	CountBytes(ioState, 4);
}

// One sample at a time, whatever the compiler could do with vectors.
#if defined(__clang__)
#define SONARO_ONE_BY_ONE
#define SONARO_ONE_BY_ONE_LOOP _Pragma("clang loop vectorize(disable) interleave(disable)")
#else
#define SONARO_ONE_BY_ONE __attribute__((optimize("no-tree-vectorize")))
#define SONARO_ONE_BY_ONE_LOOP
#endif

SONARO_ONE_BY_ONE void FoldOneByOne(float const* const* inInputs, float* const* outOutputs)
{
	SONARO_ONE_BY_ONE_LOOP
	for (unsigned i = 0; i < kFrames; ++i)
	{
		float const center = 0.5f * inInputs[2][i];
		outOutputs[0][i] = 0.63157f * (0.75f * inInputs[0][i] + center + 0.33f * inInputs[4][i]);
		outOutputs[1][i] = 0.63157f * (0.75f * inInputs[1][i] + center + 0.33f * inInputs[5][i]);
	}
}

SONARO_ONE_BY_ONE void SumOneByOne(float const* const* inInputs, float const* inGains, float* outOutput)
{
	SONARO_ONE_BY_ONE_LOOP
	for (unsigned i = 0; i < kFrames; ++i)
	{
		outOutput[i] = inGains[0] * inInputs[0][i] + inGains[1] * inInputs[1][i] +
					   inGains[2] * inInputs[2][i] + inGains[3] * inInputs[3][i];
	}
}

SONARO_ONE_BY_ONE void FeedOneByOne(float const* inInput, float inFactor, float* outOutput)
{
	SONARO_ONE_BY_ONE_LOOP
	for (unsigned i = 2; i < kFrames; ++i)
	{
		outOutput[i] = (2.0f * inInput[i - 1] + inInput[i] + inInput[i - 2]) * inFactor;
	}
}

enum class Form
{
	kOneByOne,
	kKernel,
};

template <Form kForm>
void BM_KernelFold(benchmark::State& ioState)
{
	dsp::AudioBuffer input(6, kFrames);
	dsp::AudioBuffer output(2, kFrames);
	Fill(input);
	for (auto _ : ioState)
	{
		if constexpr (kForm == Form::kKernel)
		{
			zorvaccelerate::utility::FoldChannels(zorvaccelerate::utility::ChannelFold::kFrontRearToStereo,
				kFrames, input.GetChannels(), {0.75f, 0.5f, 0.33f, 0.63157f}, output.GetChannels());
		}
		else
		{
			FoldOneByOne(input.GetChannels(), output.GetChannels());
		}
		benchmark::ClobberMemory();
	}
	CountBytes(ioState, 7);
}

template <Form kForm>
void BM_KernelSum(benchmark::State& ioState)
{
	constexpr float kGains[] = {0.1f, 0.2f, 0.3f, 0.4f};
	dsp::AudioBuffer input(4, kFrames);
	dsp::AudioBuffer output(1, kFrames);
	Fill(input);
	for (auto _ : ioState)
	{
		if constexpr (kForm == Form::kKernel)
		{
			zorvaccelerate::utility::WeightedSum(
				kFrames, 4, input.GetChannels(), kGains, output.GetChannel(0));
		}
		else
		{
			SumOneByOne(input.GetChannels(), kGains, output.GetChannel(0));
		}
		benchmark::ClobberMemory();
	}
	CountBytes(ioState, 5);
}

template <Form kForm>
void BM_KernelFeed(benchmark::State& ioState)
{
	dsp::AudioBuffer input(1, kFrames);
	dsp::AudioBuffer output(1, kFrames);
	Fill(input);
	for (auto _ : ioState)
	{
		if constexpr (kForm == Form::kKernel)
		{
			zorvaccelerate::utility::FilterFeed feed{.mFirst = input.GetChannel(0)};
			zorvaccelerate::utility::FeedFilter(kFrames, feed, 0.1f, output.GetChannel(0));
		}
		else
		{
			FeedOneByOne(input.GetChannel(0), 0.1f, output.GetChannel(0));
		}
		benchmark::ClobberMemory();
	}
	CountBytes(ioState, 2);
}

// One control block after the other, as a track pushes them.
void RunPanner(benchmark::State& ioState, IAudioPanProcessor& ioPanner)
{
	InterfaceRef<IParameterOwnerMixin> const owner(InterfaceRef<Unknown>::FromThis(&ioPanner));
	dsp::AudioBuffer input(ioPanner.GetNumInputChannels(), kFrames);
	dsp::AudioBuffer output(ioPanner.GetNumOutputChannels(), kFrames);
	Fill(input);
	TickTime time;
	for (auto _ : ioState)
	{
		if (owner)
		{
			owner->UpdateControls(time);
		}
		ioPanner.ProcessAudioData(input, output, time);
		time.AddFrames(kFrames, k48000Hz);
		benchmark::ClobberMemory();
	}
	CountBytes(ioState, ioPanner.GetNumInputChannels() + ioPanner.GetNumOutputChannels());
}

class Scope
{
public:
	Scope() = default;
	~Scope() { mContext->Clear(); }
	Scope(Scope const&) = delete;
	Scope& operator=(Scope const&) = delete;

	GraphFactory<> mFactory;
	InterfaceRef<IAudioRenderContext> mContext =
		mFactory.CreateAudioRenderContext({.mMaxBlockSize = kFrames, .mControlInterval = kFrames});
};

std::vector<InterfaceRef<IRenderableAudioComponentParam>> MakeControls(unsigned inCount, bool inMove)
{
	std::vector<InterfaceRef<IRenderableAudioComponentParam>> controls;
	for (unsigned i = 0; i < inCount; ++i)
	{
		controls.push_back(
			inMove ? zorvcore::classref::MakeObject<FakeParameter>([](TickTime const& inTime)
						 { return static_cast<float>(inTime.ToFrame64(k48000Hz) / kFrames % 100) * 0.01f; })
				   : zorvcore::classref::MakeObject<FakeParameter>(0.3f));
	}
	return controls;
}

void BM_Panner(
	benchmark::State& ioState, PanProcessorType inType, unsigned inControls, bool inMove, bool inIsDirect)
{
	Scope const scope;
	InterfaceRef<IAudioPanProcessor> panner;
	if (inIsDirect)
	{
		panner = scope.mFactory.CreateDirectAudioPanProcessorRenderer({
			.mContext = scope.mContext,
			.mFrameRate = k48000Hz,
			.mType = inType,
			.mOutputChannels = 8,
			.mMatrix = {{0, {0, 1, 4, 5, 6, 7}}},
			.mParams = MakeControls(inControls, inMove),
		});
	}
	else
	{
		panner = scope.mFactory.CreateAudioPanProcessorRenderer({
			.mContext = scope.mContext,
			.mFrameRate = k48000Hz,
			.mType = inType,
			.mParams = MakeControls(inControls, inMove),
		});
	}
	RunPanner(ioState, *panner);
}

void BM_ChannelMixer(benchmark::State& ioState)
{
	Scope const scope;
	auto const mixer = scope.mFactory.CreateChannelMixerAudioPanProcessorRenderer(VX::kAudioChannelLayout_51,
		VX::kAudioChannelLayout_Stereo, std::vector<std::vector<float>>(6, {0.3f, 0.4f}));
	RunPanner(ioState, *mixer);
}

void BM_ChannelMatrix(benchmark::State& ioState)
{
	Scope const scope;
	auto const matrix =
		scope.mFactory.CreateAudioChannelMatrixRenderer(scope.mContext, k48000Hz, {{0, {1}}, {1, {0}}});
	dsp::AudioBuffer buffer(2, kFrames);
	Fill(buffer);
	for (auto _ : ioState)
	{
		matrix->ProcessAudioData(buffer, kTimeZero);
		benchmark::ClobberMemory();
	}
	CountBytes(ioState, 8);
}

BENCHMARK(BM_BareCopy)->DenseRange(2, 8, 1)->Arg(14)->Arg(64);
BENCHMARK(BM_Fold)->ArgsProduct({{1, 2, 3, 4}, {1, 2}});
BENCHMARK(BM_StereoToMono);
BENCHMARK(BM_MonoToStereo);
BENCHMARK(BM_StereoTo51ByMatrix);
BENCHMARK(BM_KernelFold<Form::kOneByOne>);
BENCHMARK(BM_KernelFold<Form::kKernel>);
BENCHMARK(BM_KernelSum<Form::kOneByOne>);
BENCHMARK(BM_KernelSum<Form::kKernel>);
BENCHMARK(BM_KernelFeed<Form::kOneByOne>);
BENCHMARK(BM_KernelFeed<Form::kKernel>);
BENCHMARK_CAPTURE(BM_Panner, MonoToStereo, kPanMonoToStereo, 1, false, false);
BENCHMARK_CAPTURE(BM_Panner, MonoToStereoMoving, kPanMonoToStereo, 1, true, false);
BENCHMARK_CAPTURE(BM_Panner, StereoToStereo, kPanStereoToStereo, 1, false, false);
BENCHMARK_CAPTURE(BM_Panner, StereoToStereoMoving, kPanStereoToStereo, 1, true, false);
BENCHMARK_CAPTURE(BM_Panner, Balance32, kPanBalance, 1, false, false);
BENCHMARK_CAPTURE(BM_Panner, MonoTo51, kPanMonoTo51, 4, false, false);
BENCHMARK_CAPTURE(BM_Panner, MonoTo51Moving, kPanMonoTo51, 4, true, false);
BENCHMARK_CAPTURE(BM_Panner, StereoTo51, kPanStereoTo51, 4, false, false);
BENCHMARK_CAPTURE(BM_Panner, StereoTo51Moving, kPanStereoTo51, 4, true, false);
BENCHMARK_CAPTURE(BM_Panner, MonoToAdaptive8, kPanMonoToAdaptive, 1, false, true);
BENCHMARK_CAPTURE(BM_Panner, StereoToAdaptive8, kPanStereoToAdaptive, 1, false, true);
BENCHMARK(BM_ChannelMixer);
BENCHMARK(BM_ChannelMatrix);

} // namespace
