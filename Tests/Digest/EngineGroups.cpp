#include "Digest.h"

#include "Sonaro/AudioResamplerFactory.h"
#include "Sonaro/GraphFactory.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioTimeScalerFactory.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/PanProcessorType.h"
#include "SonaroHost/Automation/AutomationParameter.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/ChannelMixer.h"
#include "zorvaudiodsp/ambi/AmbisonicsBinauralizer.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"
#include "zorvaudiofilters/ambisonics/binauralizer/HRIR.h"
#include "zorvmediatypes/ChannelConversionMatrix.h"

#include <algorithm>

namespace SonaroDigest
{

namespace
{

void FillNoise(Random& ioRandom, unsigned inCount, dsp::AudioBuffer& outBuffer)
{
	outBuffer.SetUseSize(inCount);
	for (unsigned channel = 0; channel < outBuffer.GetNumChannels(); ++channel)
	{
		std::vector<float> const noise = ioRandom.MakeNoise(inCount);
		std::copy(noise.begin(), noise.end(), outBuffer.GetChannel(channel));
		outBuffer.NoteChannelWrite(channel, inCount);
	}
}

void AddBuffer(dsp::AudioBuffer const& inBuffer, unsigned inCount, Digest& ioDigest)
{
	for (unsigned channel = 0; channel < inBuffer.GetNumChannels(); ++channel)
	{
		bool const isSilent = inBuffer.IsChannelSilent(channel);
		ioDigest.Add(std::int64_t{isSilent});
		if (!isSilent)
		{
			ioDigest.AddAll(std::span<float const>(inBuffer.GetChannel(channel), inCount));
		}
	}
}

// Drives a resampler or a scaler.
template <class Converter>
void RunConverter(Converter& ioConverter, Random& ioRandom, unsigned inBlocks, Digest& ioDigest)
{
	for (unsigned block = 0; block < inBlocks; ++block)
	{
		unsigned const numOutput = 1 + ioRandom.Below(900);
		unsigned const numInput = ioConverter.GetInputSampleCount(numOutput);
		dsp::AudioBuffer input(2, std::max(numInput, 1u));
		dsp::AudioBuffer output(2, numOutput);
		FillNoise(ioRandom, numInput, input);
		ioConverter.Process(input, output, numInput, numOutput);
		ioDigest.Add(std::int64_t{numInput});
		AddBuffer(output, numOutput, ioDigest);
	}
}

void RunResamplers(Digest& ioDigest)
{
	constexpr double kRates[] = {8000, 11025, 22050, 32000, 44100, 48000, 88200, 96000, 192000};
	for (auto const quality :
		{SN::RenderQuality::kDraft, SN::RenderQuality::kMedium, SN::RenderQuality::kMaximum})
	{
		Random random(8);
		for (unsigned trial = 0; trial < 30; ++trial)
		{
			auto const from = SN::FrameRate::FromSamplesPerSecond(kRates[random.Below(9)]);
			auto const to = SN::FrameRate::FromSamplesPerSecond(kRates[random.Below(9)]);
			auto const resampler = SN::AudioResamplerFactory::CreateAudioResampler(quality);
			resampler->Init(from, to, 2, trial % 2 == 0);
			RunConverter(*resampler, random, 8, ioDigest);
			if (SN::AudioResamplerFactory::IsSpecializedResamplerAvailable(from, to))
			{
				ioDigest.Add(std::int64_t{1});
			}
		}
	}
}

void RunScaler(Digest& ioDigest)
{
	Random random(9);
	for (double const ratio : {0.1, 0.4, 0.8, 1.0, 1.25, 2.0, 3.7, 10.0})
	{
		for (unsigned const windowMode : {0u, 2u})
		{
			auto const scaler =
				SN::GetAudioTimeScalerFactory()->CreateAudioTimeScaler(SN::RenderQuality::kMaximum);
			scaler->Init(ratio, SN::FrameRate::FromSamplesPerSecond(48000), 2, windowMode == 0 ? 1.0 : 1.2,
				1024, windowMode);
			RunConverter(*scaler, random, 12, ioDigest);
		}
	}
}

void StretchBlock(dsp::stretch::omega::OmegaEngine& ioEngine, Random& ioRandom, Digest& ioDigest)
{
	constexpr unsigned kBlock = 512;
	unsigned const numInput = ioEngine.GetInputNeeded(kBlock);
	std::vector<float> left = ioRandom.MakeNoise(numInput + 1);
	std::vector<float> right = ioRandom.MakeNoise(numInput + 1);
	// Tones of a wave of straight lines, so that there is something to splice at.
	for (unsigned i = 0; i < numInput; ++i)
	{
		left[i] = 0.1f * left[i] + static_cast<float>(i % 109) / 109.0f - 0.5f;
		right[i] = 0.1f * right[i] + static_cast<float>(i % 91) / 91.0f - 0.5f;
	}
	std::vector<float> outLeft(kBlock);
	std::vector<float> outRight(kBlock);
	float const* const inputs[] = {left.data(), right.data()};
	float* const outputs[] = {outLeft.data(), outRight.data()};
	ioEngine.Process(kBlock, inputs, outputs);
	ioDigest.Add(std::int64_t{numInput});
	ioDigest.AddAll(outLeft);
	ioDigest.AddAll(outRight);
}

void RunStretchers(Digest& ioDigest)
{
	using namespace dsp::stretch::omega;
	Random random(10);
	for (float const ratio : {0.25f, 0.5f, 0.9f, 1.0f, 1.1f, 1.7f, 3.0f})
	{
		for (float const semitones : {-7.0f, 0.0f, 3.3f})
		{
			OmegaEngine* engine = nullptr;
			ioDigest.Add(std::int64_t{OmegaEngine::CreateOfKind(
				&engine, OmegaEngineKind::kSplice, 48000.0f, 2, 512, {0.1f, 10.0f, -24.0f, 24.0f})});
			StreamSettings settings;
			settings.mPreferAccuracy = 1;
			engine->Begin(48000.0f, &settings, 1000000);
			for (unsigned block = 0; block < 40; ++block)
			{
				engine->SetRatio(ratio, ratio);
				engine->SetPitch(semitones, semitones);
				StretchBlock(*engine, random, ioDigest);
			}
			engine->End();
			OmegaEngine::Destroy(engine);
		}
	}
}

std::vector<SN::InterfaceRef<SN::IRenderableAudioComponentParam>> MakeControls(
	Random& ioRandom, unsigned inCount)
{
	std::vector<SN::InterfaceRef<SN::IRenderableAudioComponentParam>> params;
	for (unsigned index = 0; index < inCount; ++index)
	{
		std::vector<SonaroHost::AutomationPoint> points;
		for (unsigned point = 0; point < 5; ++point)
		{
			points.push_back({SN::TickTime::FromSeconds(0.02 * point), ioRandom.Between(0.0, 1.0),
				static_cast<SonaroHost::Interpolation>(ioRandom.Below(3))});
		}
		auto parameter = SonaroHost::AutomationParameter<float>::Create(0.5f);
		parameter->SetCurve(std::make_shared<SonaroHost::AutomationCurve const>(std::move(points)));
		params.push_back(parameter);
	}
	return params;
}

struct PannerCase
{
	SN::PanProcessorType mType;
	unsigned mControls;
	bool mIsDirect = false;
};

SN::InterfaceRef<SN::IAudioPanProcessor> MakePanner(PannerCase const& inCase,
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inRate, Random& ioRandom)
{
	auto const params = MakeControls(ioRandom, inCase.mControls);
	return inCase.mIsDirect
			   ? SN::GraphFactory().CreateDirectAudioPanProcessorRenderer({.mContext = inContext,
					 .mFrameRate = inRate,
					 .mType = inCase.mType,
					 .mOutputChannels = 2,
					 .mMatrix = {{0, {0, 1}}},
					 .mParams = params})
			   : SN::GraphFactory().CreateAudioPanProcessorRenderer(
					 {.mContext = inContext, .mFrameRate = inRate, .mType = inCase.mType, .mParams = params});
}

void RunPanner(PannerCase const& inCase, Random& ioRandom, Digest& ioDigest)
{
	constexpr unsigned kBlock = 64;
	auto const rate = SN::FrameRate::FromSamplesPerSecond(48000);
	SonaroHost::RenderContextScope const context(512, SN::kTimeMax, SN::ImmutableString("digest"));
	auto const panner = MakePanner(inCase, context.Get(), rate, ioRandom);
	SN::InterfaceRef<SN::IParameterOwnerMixin> const owner(
		SN::InterfaceRef<SN::Unknown>::FromThis(panner.Get()));
	dsp::AudioBuffer input(panner->GetNumInputChannels(), kBlock);
	dsp::AudioBuffer output(panner->GetNumOutputChannels(), kBlock);
	for (unsigned block = 0; block < 70; ++block)
	{
		SN::TickTime const time(static_cast<long long>(block) * kBlock, rate);
		FillNoise(ioRandom, kBlock, input);
		if (owner)
		{
			owner->UpdateControls(time);
		}
		panner->ProcessAudioData(input, output, time);
		AddBuffer(output, kBlock, ioDigest);
	}
}

void RunPanners(Digest& ioDigest)
{
	constexpr PannerCase kCases[] = {{SN::kPanMonoToStereo, 1}, {SN::kPanStereoToStereo, 1},
		{SN::kPanMonoToAdaptive, 1, true}, {SN::kPanStereoToAdaptive, 1, true}, {SN::kPanMonoTo51, 4},
		{SN::kPanStereoTo51, 4}, {SN::kPanStereoToMono, 0}, {SN::kPan51ToMono, 0}, {SN::kPan51ToStereo, 0}};
	for (unsigned trial = 0; trial < 20; ++trial)
	{
		Random random(trial);
		for (PannerCase const& test : kCases)
		{
			RunPanner(test, random, ioDigest);
		}
	}
}

void RunBinaural(Digest& ioDigest)
{
	using namespace dsp::ambi;
	constexpr unsigned kBlock = 480;
	auto const ears = zorvaudiofilters::ambisonics::binauralizer::GetDefaultHRIR();
	for (unsigned const rate : {44100u, 48000u, 50000u, 96000u})
	{
		Random random(rate);
		AmbisonicsBinauralizer binauralizer(rate, kBlock, 1, ChannelOrdering::kACN, Normalization::kSN3D);
		binauralizer.Load(ears->GetDescriptor(), ears->GetLeftData(), ears->GetRightData());
		dsp::AudioBuffer field(4, kBlock);
		std::vector<std::vector<float>> heard(2, std::vector<float>(kBlock));
		for (unsigned block = 0; block < 30; ++block)
		{
			FillNoise(random, kBlock, field);
			float const* const inputs[] = {
				field.GetChannel(0), field.GetChannel(1), field.GetChannel(2), field.GetChannel(3)};
			float* const outputs[] = {heard[0].data(), heard[1].data()};
			auto const turn = [&random] { return static_cast<float>(random.Between(-180.0, 180.0)); };
			EulerAngle angle;
			angle.mYaw = turn();
			angle.mPitch = turn();
			angle.mRoll = turn();
			binauralizer.Process(angle, kBlock, 4, 2, inputs, outputs);
			ioDigest.AddAll(heard[0]);
			ioDigest.AddAll(heard[1]);
		}
	}
}

constexpr Group kGroups[] = {
	{"resamplers", RunResamplers},
	{"time scaler", RunScaler},
	{"stretcher", RunStretchers},
	{"panners", RunPanners},
	{"binaural", RunBinaural},
};

} // namespace

std::span<Group const> GetEngineGroups()
{
	return kGroups;
}

} // namespace SonaroDigest
