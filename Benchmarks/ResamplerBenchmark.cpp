// The resamplers, and others where they are installed: output samples a second of one channel beside the
// signal-to-noise ratio of a tone of 1 kHz and one of 10 kHz.

#include "SonaroHost/Media/RateConverter.h"
#include "Time/ResamplerRuns.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#ifdef SONARO_HAS_SAMPLERATE
#include <samplerate.h>
#endif
#ifdef SONARO_HAS_SOXR
#include <soxr.h>
#endif
#ifdef SONARO_HAS_SPEEXDSP
#include <speex/speex_resampler.h>
#endif
#ifdef SONARO_HAS_ZITA
#include <zita-resampler/resampler.h>
#endif

namespace
{

using namespace SN;
using SonaroHost::RateConverter;
using SonaroHost::RateQuality;
using SonaroHost::Ratio;
using namespace SN::Testing;

constexpr unsigned kBlock = 4096;

struct Rates
{
	unsigned mInput;
	unsigned mOutput;
};
constexpr Rates kRates[] = {{44100, 48000}, {48000, 44100}};

// Takes a block of input and gives the outputs that are ready.
using Stream = std::function<Signal(float const* inInput, unsigned inCount)>;
using MakeStream = std::function<Stream(Rates const& inRates)>;

double MeasureNoise(MakeStream const& inMake, Rates const& inRates, double inHertz)
{
	Stream const stream = inMake(inRates);
	Signal const input = MakeTone(inHertz / inRates.mInput, 64 * kBlock);
	Signal output;
	for (unsigned cursor = 0; cursor < input.size(); cursor += kBlock)
	{
		Signal const block = stream(input.data() + cursor, kBlock);
		output.insert(output.end(), block.begin(), block.end());
	}
	// What is in the middle, far from either end.
	Signal const middle(output.begin() + 20000, output.begin() + 40000);
	return FitTone(middle, inHertz / inRates.mOutput, 0.0, 1.0).mSignalToNoise;
}

void Measure(benchmark::State& ioState, MakeStream const& inMake, Rates const& inRates)
{
	Stream const stream = inMake(inRates);
	Signal const input = MakeTone(1000.0 / inRates.mInput, kBlock);
	std::size_t outputs = 0;
	for (auto _ : ioState)
	{
		Signal const block = stream(input.data(), kBlock);
		benchmark::DoNotOptimize(block.data());
		outputs += block.size();
	}
	ioState.SetItemsProcessed(static_cast<std::int64_t>(outputs));
	ioState.counters["dB_1kHz"] = MeasureNoise(inMake, inRates, 1000.0);
	ioState.counters["dB_10kHz"] = MeasureNoise(inMake, inRates, 10000.0);
}

// The engine's own are driven by the outputs that they are asked for, so that the input waits here.
class OwnStream
{
public:
	OwnStream(ResamplerKind inKind, Rates const& inRates)
		: mResampler(MakeResampler(inKind, RatePair(inRates.mInput, inRates.mOutput))),
		  mInput(1, 16 * kBlock),
		  mOutput(1, kBlock)
	{
	}

	Signal Process(float const* inInput, unsigned inCount)
	{
		std::copy_n(inInput, inCount, mInput.GetChannel(0) + mWaiting);
		mWaiting += inCount;
		Signal result;
		while (true)
		{
			if (!mIsAsked)
			{
				mNumInput = mResampler->GetInputSampleCount(kBlock / 2);
				mIsAsked = true;
			}
			if (mNumInput > mWaiting)
			{
				return result;
			}
			mResampler->Process(mInput, mOutput, mNumInput, kBlock / 2);
			mIsAsked = false;
			float* const waiting = mInput.GetChannel(0);
			std::copy(waiting + mNumInput, waiting + mWaiting, waiting);
			mWaiting -= mNumInput;
			result.insert(result.end(), mOutput.GetChannel(0), mOutput.GetChannel(0) + kBlock / 2);
		}
	}

private:
	InterfaceRef<IAudioResampler> mResampler;
	dsp::AudioBuffer mInput;
	dsp::AudioBuffer mOutput;
	unsigned mWaiting = 0;
	unsigned mNumInput = 0;
	bool mIsAsked = false;
};

MakeStream MakeOwn(ResamplerKind inKind)
{
	return [inKind](Rates const& inRates) -> Stream
	{
		auto const own = std::make_shared<OwnStream>(inKind, inRates);
		return [own](float const* inInput, unsigned inCount) { return own->Process(inInput, inCount); };
	};
}

// The host's converter, which is asked for outputs, with a history of input in front of it.
class HostStream
{
public:
	using Convert = std::function<void(RateConverter const&, std::int64_t, unsigned, float const*, float*)>;

	HostStream(RateQuality inQuality, Rates const& inRates, Convert inConvert)
		: mConverter(Ratio(inRates.mInput, inRates.mOutput), {}, inQuality),
		  mStep(static_cast<double>(inRates.mInput) / inRates.mOutput),
		  mConvert(std::move(inConvert)),
		  mFirst(mConverter.GetInput(0, 1).mFirst),
		  mInput(static_cast<std::size_t>(-mFirst))
	{
	}

	Signal Process(float const* inInput, unsigned inCount)
	{
		mInput.insert(mInput.end(), inInput, inInput + inCount);
		std::int64_t const end = mFirst + static_cast<std::int64_t>(mInput.size());
		auto const fits = [&](std::int64_t inOutputs)
		{ return mConverter.GetInput(mNext, inOutputs).mEnd <= end; };
		auto count = static_cast<std::int64_t>(
			static_cast<double>(end - mConverter.GetInput(mNext, 1).mEnd) / mStep + 2.0);
		while (count > 0 && !fits(count))
		{
			--count;
		}
		Signal output(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
		if (!output.empty())
		{
			mConvert(mConverter, mNext, static_cast<unsigned>(count), mInput.data(), output.data());
			mNext += count;
			std::int64_t const first = mConverter.GetInput(mNext, 1).mFirst;
			mInput.erase(mInput.begin(), mInput.begin() + (first - mFirst));
			mFirst = first;
		}
		return output;
	}

private:
	RateConverter mConverter;
	double mStep;
	Convert mConvert;
	std::int64_t mFirst;
	std::int64_t mNext = 0;
	Signal mInput;
};

void ConvertAsIs(RateConverter const& inConverter, std::int64_t inFirst, unsigned inCount,
	float const* inInput, float* outOutputs)
{
	RateConverter::Channel const channel{inInput, outOutputs};
	inConverter.Convert(inFirst, inCount, {&channel, 1});
}

// As many products and sums, one after the other.
void AddPlainly(RateConverter const& inConverter, std::int64_t inFirst, unsigned inCount,
	float const* inInput, float* outOutputs)
{
	unsigned const taps = inConverter.GetTaps();
	static Signal const sFilter(1u << 16, 1.0e-3f);
	std::int64_t const base = inConverter.GetInput(inFirst, 1).mFirst;
	for (unsigned i = 0; i < inCount; ++i)
	{
		float const* const samples = inInput + (inConverter.GetInput(inFirst + i, 1).mFirst - base);
		float const* const row = sFilter.data() + i % 160 * taps;
		float sum = 0.0f;
		for (unsigned k = 0; k < taps; ++k)
		{
			sum += row[k] * samples[k];
		}
		outOutputs[i] = sum;
	}
}

MakeStream MakeHosts(RateQuality inQuality, HostStream::Convert const& inConvert = &ConvertAsIs)
{
	return [inQuality, inConvert](Rates const& inRates) -> Stream
	{
		auto const stream = std::make_shared<HostStream>(inQuality, inRates, inConvert);
		return [stream](float const* inInput, unsigned inCount) { return stream->Process(inInput, inCount); };
	};
}

#ifdef SONARO_HAS_SAMPLERATE
MakeStream MakeSamplerate(int inConverter)
{
	return [inConverter](Rates const& inRates) -> Stream
	{
		int error = 0;
		std::shared_ptr<SRC_STATE> const state(src_new(inConverter, 1, &error), &src_delete);
		double const ratio = static_cast<double>(inRates.mOutput) / inRates.mInput;
		return [state, ratio](float const* inInput, unsigned inCount)
		{
			Signal output(2 * kBlock);
			SRC_DATA data{};
			data.data_in = inInput;
			data.data_out = output.data();
			data.input_frames = static_cast<long>(inCount);
			data.output_frames = static_cast<long>(output.size());
			data.src_ratio = ratio;
			src_process(state.get(), &data);
			output.resize(static_cast<std::size_t>(data.output_frames_gen));
			return output;
		};
	};
}
#endif

#ifdef SONARO_HAS_SOXR
MakeStream MakeSoxr(unsigned long inRecipe)
{
	return [inRecipe](Rates const& inRates) -> Stream
	{
		soxr_quality_spec_t const quality = soxr_quality_spec(inRecipe, 0);
		std::shared_ptr<soxr> const state(
			soxr_create(inRates.mInput, inRates.mOutput, 1, nullptr, nullptr, &quality, nullptr),
			&soxr_delete);
		return [state](float const* inInput, unsigned inCount)
		{
			Signal output(4 * kBlock);
			std::size_t used = 0;
			std::size_t made = 0;
			soxr_process(state.get(), inInput, inCount, &used, output.data(), output.size(), &made);
			output.resize(made);
			return output;
		};
	};
}
#endif

#ifdef SONARO_HAS_SPEEXDSP
MakeStream MakeSpeex(int inQuality)
{
	return [inQuality](Rates const& inRates) -> Stream
	{
		int error = 0;
		std::shared_ptr<SpeexResamplerState> const state(
			speex_resampler_init(1, inRates.mInput, inRates.mOutput, inQuality, &error),
			&speex_resampler_destroy);
		return [state](float const* inInput, unsigned inCount)
		{
			Signal output(2 * kBlock);
			spx_uint32_t used = inCount;
			spx_uint32_t made = 2 * kBlock;
			speex_resampler_process_float(state.get(), 0, inInput, &used, output.data(), &made);
			output.resize(made);
			return output;
		};
	};
}
#endif

#ifdef SONARO_HAS_ZITA
// inHalfLength: of its filter, 16 to 96.
MakeStream MakeZita(unsigned inHalfLength)
{
	return [inHalfLength](Rates const& inRates) -> Stream
	{
		auto const state = std::make_shared<Resampler>();
		state->setup(inRates.mInput, inRates.mOutput, 1, inHalfLength);
		return [state](float const* inInput, unsigned inCount)
		{
			Signal output(2 * kBlock);
			// It takes no const and writes nothing there.
			state->inp_data = const_cast<float*>(inInput);
			state->inp_count = inCount;
			state->out_data = output.data();
			state->out_count = static_cast<unsigned>(output.size());
			state->process();
			output.resize(output.size() - state->out_count);
			return output;
		};
	};
}
#endif

void Register(std::string const& inName, MakeStream const& inMake)
{
	for (Rates const& rates : kRates)
	{
		std::string const name = "BM_Resampler/" + inName + "/" + std::to_string(rates.mInput) + "to" +
								 std::to_string(rates.mOutput);
		benchmark::RegisterBenchmark(
			name.c_str(), [inMake, rates](benchmark::State& ioState) { Measure(ioState, inMake, rates); });
	}
}

// Before main, as the other benchmarks are entered.
[[maybe_unused]] bool const sIsRegistered = []
{
	Register("linear", MakeOwn(ResamplerKind::kLinear));
	Register("cubic", MakeOwn(ResamplerKind::kCubic));
	Register("sinc", MakeOwn(ResamplerKind::kSinc));
	Register("sincHighQuality", MakeOwn(ResamplerKind::kSincHighQuality));
	Register("exact", MakeHosts(RateQuality::kFull));
	Register("draft", MakeHosts(RateQuality::kDraft));
	Register("exact/plainLoop", MakeHosts(RateQuality::kFull, &AddPlainly));
#ifdef SONARO_HAS_SAMPLERATE
	Register("libsamplerate/best", MakeSamplerate(SRC_SINC_BEST_QUALITY));
	Register("libsamplerate/medium", MakeSamplerate(SRC_SINC_MEDIUM_QUALITY));
	Register("libsamplerate/fastest", MakeSamplerate(SRC_SINC_FASTEST));
	Register("libsamplerate/linear", MakeSamplerate(SRC_LINEAR));
#endif
#ifdef SONARO_HAS_SOXR
	Register("soxr/veryHigh", MakeSoxr(SOXR_VHQ));
	Register("soxr/high", MakeSoxr(SOXR_HQ));
	Register("soxr/low", MakeSoxr(SOXR_LQ));
	Register("soxr/quick", MakeSoxr(SOXR_QQ));
#endif
#ifdef SONARO_HAS_SPEEXDSP
	Register("speexdsp/10", MakeSpeex(10));
	Register("speexdsp/5", MakeSpeex(5));
#endif
#ifdef SONARO_HAS_ZITA
	Register("zita/96", MakeZita(96));
	Register("zita/16", MakeZita(16));
#endif
	return true;
}();

// A new resampler, ready to run: the design of its filter.
void BM_ResamplerInit(benchmark::State& ioState)
{
	auto const kind = static_cast<ResamplerKind>(ioState.range(0));
	for (auto _ : ioState)
	{
		benchmark::DoNotOptimize(MakeResampler(kind, RatePair(48000, 44100), 2));
	}
}
BENCHMARK(BM_ResamplerInit)
	->Arg(static_cast<int>(ResamplerKind::kSinc))
	->Arg(static_cast<int>(ResamplerKind::kSincHighQuality))
	->Unit(benchmark::kMillisecond);

// The same of the host's converter: of one by phases, and of one that interpolates.
void BM_RateConverterInit(benchmark::State& ioState)
{
	for (auto _ : ioState)
	{
		RateConverter const converter(Ratio(147, ioState.range(0)), {});
		benchmark::DoNotOptimize(converter.GetTaps());
	}
}
BENCHMARK(BM_RateConverterInit)->Arg(160)->Arg(160001)->Unit(benchmark::kMillisecond);

} // namespace
