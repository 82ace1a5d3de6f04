#include "Digest.h"

#include "Media/RampConverter.h"
#include "Metering/KWeighting.h"
#include "Metering/TruePeakTaps.h"
#include "Offline/NoiseLearner.h"
#include "Offline/NoiseReducer.h"
#include "SonaroHost/Automation/AutomationCurve.h"
#include "SonaroHost/Base/FadeShape.h"
#include "SonaroHost/Media/RateConverter.h"
#include "SonaroHost/Media/Stretch.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "SonaroHost/Metering/LoudnessSeries.h"
#include "SonaroHost/Metering/PeakLimiter.h"
#include "SonaroHost/Metering/SampleQuantizer.h"
#include "SonaroHost/Waveform/PeakColumn.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <array>

namespace SonaroDigest
{

namespace
{

using namespace SonaroHost;

void Convert(SampleConverter const& inConverter, std::int64_t inFirst, Random& ioRandom, Digest& ioDigest)
{
	constexpr unsigned kOutputs = 300;
	auto const span = inConverter.GetInput(inFirst, kOutputs);
	std::vector<float> const input = ioRandom.MakeNoise(static_cast<std::size_t>(span.mEnd - span.mFirst));
	std::vector<float> output(kOutputs);
	SampleConverter::Channel const channel{input.data(), output.data()};
	inConverter.Convert(inFirst, kOutputs, {&channel, 1});
	ioDigest.Add(span.mFirst);
	ioDigest.Add(span.mEnd);
	ioDigest.AddAll(output);
}

void RunRateConverters(Digest& ioDigest)
{
	Random random(20);
	std::vector<Ratio> steps = {
		Ratio(147, 160), Ratio(160, 147), Ratio(1, 2), Ratio(2), Ratio(-3, 2), Ratio(7)};
	for (unsigned trial = 0; trial < 20; ++trial)
	{
		steps.push_back(Ratio::FromExactDouble(random.Between(0.1, 6.0)));
	}
	for (Ratio const& step : steps)
	{
		for (auto const quality : {RateQuality::kFull, RateQuality::kDraft})
		{
			RateConverter const converter(step, {5, Ratio(1, 3)}, quality);
			Convert(converter, 0, random, ioDigest);
			Convert(converter, 123456789, random, ioDigest);
		}
	}
}

void RunRampConverters(Digest& ioDigest)
{
	Random random(21);
	for (unsigned trial = 0; trial < 12; ++trial)
	{
		std::vector<SpeedKey> keys;
		for (std::int64_t key = 0; key < 4; ++key)
		{
			keys.push_back({Ratio(key, 10), Ratio(static_cast<std::int64_t>(random.Below(13)) - 6, 2),
				static_cast<Interpolation>(random.Below(3))});
		}
		RampConverter const converter(SpeedCurve(std::move(keys)),
			{Ratio(48000), Ratio(44100), 0, 1000, Ratio()},
			trial % 2 == 0 ? RateQuality::kFull : RateQuality::kDraft);
		for (std::int64_t first = -500; first < 15000; first += 700)
		{
			Convert(converter, first, random, ioDigest);
		}
	}
}

dsp::AudioBuffer MakeNoise(Random& ioRandom, unsigned inChannels, unsigned inFrames, float inGain)
{
	dsp::AudioBuffer buffer(inChannels, inFrames);
	for (unsigned channel = 0; channel < inChannels; ++channel)
	{
		std::vector<float> const noise = ioRandom.MakeNoise(inFrames);
		std::transform(noise.begin(), noise.end(), buffer.GetChannel(channel),
			[inGain](float inSample) { return inSample * inGain; });
		buffer.NoteChannelWrite(channel, inFrames);
	}
	return buffer;
}

void AddReading(LoudnessReading const& inReading, Digest& ioDigest)
{
	for (double const value : {inReading.mPeak, inReading.mTruePeak, inReading.mRMS, inReading.mMomentary,
			 inReading.mShortTerm, inReading.mIntegrated})
	{
		ioDigest.Add(value);
	}
	for (std::size_t step = 0; step < inReading.mSeries->GetNumSteps(); ++step)
	{
		ioDigest.Add(inReading.mSeries->GetMomentary(step));
		ioDigest.Add(inReading.mSeries->GetShortTerm(step));
	}
	ioDigest.AddAll(std::span<double const>(inReading.mSeries->ListIntegrated(1)));
	ioDigest.Add(inReading.mSeries->GetRange().value_or(-1.0));
}

void RunLoudness(Digest& ioDigest)
{
	for (double const rate : {8000.0, 44100.0, 48000.0, 96000.0, 192000.0})
	{
		Random random(static_cast<std::uint64_t>(rate));
		LoudnessMeter meter(zorvmediatypes::Create51ChannelLayout(), rate, LoudnessMeter::Memory::kGrowing,
			LoudnessMeter::Windows::kSeries);
		auto const frames = static_cast<unsigned>(rate / 10.0);
		for (unsigned block = 0; block < 80; ++block)
		{
			meter.Add(MakeNoise(random, 6, frames, static_cast<float>(random.Between(0.01, 0.9))));
		}
		AddReading(meter.GetReadingAtEnd(), ioDigest);
		KWeighting const weighting(rate);
		ioDigest.AddAll(std::span<float const>(weighting.mFilter.mPull));
		ioDigest.AddAll(std::span<float const>(weighting.mFilter.mKeep));
		ioDigest.Add(weighting.mPowerGain);
	}
	for (std::size_t const factor : {2u, 4u})
	{
		for (std::size_t phase = 0; phase < factor; ++phase)
		{
			ioDigest.AddAll(std::span<double const>(GetTruePeakPhase(phase, factor)));
		}
	}
}

void RunLimiter(Digest& ioDigest)
{
	for (int const rate : {44100, 48000, 96000})
	{
		Random random(static_cast<std::uint64_t>(rate));
		PeakLimiter limiter(2, rate, 0.5);
		std::array<SampleQuantizer, 2> quantizers = {
			SampleQuantizer(16, Dither::kTriangular, 0), SampleQuantizer(24, Dither::kNone, 1)};
		for (unsigned block = 0; block < 40; ++block)
		{
			auto buffer = MakeNoise(random, 2, 777, static_cast<float>(random.Between(0.1, 2.0)));
			limiter.Process(buffer);
			for (unsigned channel = 0; channel < 2; ++channel)
			{
				std::span<float const> const samples(buffer.GetChannel(channel), 777);
				ioDigest.AddAll(samples);
				for (float const sample : samples)
				{
					ioDigest.Add(std::int64_t{quantizers[channel].Quantize(sample)});
				}
			}
		}
		ioDigest.Add(limiter.GetSmallestGain());
	}
}

void RunDenoise(Digest& ioDigest)
{
	for (int const rate : {22050, 48000})
	{
		constexpr std::int64_t kFrames = 60000;
		std::vector<float> samples = Random(22).MakeNoise(2 * kFrames);
		for (std::size_t i = 0; i < samples.size(); ++i)
		{
			// Noise, with a wave of straight lines in every other part.
			bool const isLoud = i / 20000 % 2 == 1;
			samples[i] = 0.01f * samples[i] + (isLoud ? static_cast<float>(i % 219) / 438.0f : 0.0f);
		}
		FrameReader const read = [&samples](float* outSamples, std::int64_t inFirst, unsigned inFrames)
		{ std::copy_n(samples.data() + 2 * inFirst, 2 * inFrames, outSamples); };
		auto const profile = LearnNoise(
			rate, 2, {0, kFrames}, NoiseLearner::Choice::kQuietest, read, [](std::int64_t) { return true; });
		ioDigest.AddAll(profile->mPower);
		NoiseReducer reducer(profile, 18.0, {rate, 2, kFrames}, 0, read);
		dsp::AudioBuffer buffer(2, 1000);
		for (std::int64_t frame = 0; frame < kFrames; frame += 1000)
		{
			reducer.Read(buffer);
			ioDigest.AddAll(std::span<float const>(buffer.GetChannel(0), 1000));
			ioDigest.AddAll(std::span<float const>(buffer.GetChannel(1), 1000));
		}
	}
}

void RunCurves(Digest& ioDigest)
{
	Random random(23);
	for (unsigned trial = 0; trial < 200; ++trial)
	{
		std::vector<AutomationPoint> points;
		for (unsigned count = 1 + random.Below(6); count > 0; --count)
		{
			points.push_back({SN::TickTime::FromSeconds(random.Between(0.0, 1.0)), random.Between(-60.0, 6.0),
				static_cast<Interpolation>(random.Below(3))});
		}
		AutomationCurve const curve(std::move(points), AutomationScale::kDecibels);
		for (unsigned sample = 0; sample < 200; ++sample)
		{
			auto const time = SN::TickTime::FromSeconds(random.Between(-0.1, 1.1));
			ioDigest.Add(curve.GetValue(time));
			ioDigest.Add(curve.GetRampedValue(time));
		}
	}
	for (unsigned i = 0; i <= 20000; ++i)
	{
		ioDigest.Add(GetFadeGain(FadeShape::kEqualPower, i / 20000.0));
		ioDigest.Add(GetFadeGain(FadeShape::kSCurve, i / 20000.0));
	}
	for (int cents = -2400; cents <= 2400; ++cents)
	{
		Ratio const factor = Stretch::GetPitchFactor(cents / 100.0);
		ioDigest.Add(factor.GetNumerator());
		ioDigest.Add(factor.GetDenominator());
		ioDigest.Add(ToDecibels(random.Between(0.0, 4.0)));
	}
}

void RunColumns(Digest& ioDigest)
{
	Random random(24);
	for (unsigned trial = 0; trial < 300; ++trial)
	{
		std::vector<float> const samples = random.MakeNoise(1 + random.Below(5000));
		PeakColumn column;
		column.Add(samples.data(), static_cast<unsigned>(samples.size()));
		ioDigest.Add(column.GetMinimum());
		ioDigest.Add(column.GetMaximum());
		ioDigest.Add(column.GetRms());
	}
}

constexpr Group kGroups[] = {
	{"rate converters", RunRateConverters},
	{"ramp converters", RunRampConverters},
	{"loudness", RunLoudness},
	{"limiter and dither", RunLimiter},
	{"noise reduction", RunDenoise},
	{"curves and fades", RunCurves},
	{"waveform columns", RunColumns},
};

} // namespace

std::span<Group const> GetHostGroups()
{
	return kGroups;
}

} // namespace SonaroDigest
