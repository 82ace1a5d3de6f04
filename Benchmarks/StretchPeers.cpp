#include "StretchPeers.h"

#include "Sonaro/IAudioTimeScalerFactory.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include <algorithm>
#include <cmath>
#include <memory>

#if defined(SONARO_HAS_SOUNDTOUCH)
#include <soundtouch/SoundTouch.h>
#endif
#if defined(SONARO_HAS_RUBBERBAND)
#include <rubberband/RubberBandStretcher.h>
#endif

namespace StretchPeers
{

namespace
{

constexpr unsigned kBlock = 1024;

// Room for a sound that is to be made longer.
Sound MakeRoom(Sound const& inSound, double inRatio)
{
	auto const length = static_cast<std::size_t>(static_cast<double>(inSound[0].size()) * inRatio);
	return Sound(inSound.size(), std::vector<float>(length));
}

using dsp::stretch::omega::OmegaEngine;
using dsp::stretch::omega::OmegaEngineKind;

Sound StretchByOmega(Sound const& inSound, double inRatio, OmegaEngineKind inKind)
{
	auto const channels = static_cast<unsigned>(inSound.size());
	OmegaEngine* made = nullptr;
	OmegaEngine::CreateOfKind(
		&made, inKind, static_cast<float>(kSampleRate), channels, kBlock, {0.1f, 10.0f, 0.0f, 0.0f});
	std::unique_ptr<OmegaEngine, void (*)(OmegaEngine*)> const engine(made, &OmegaEngine::Destroy);
	dsp::stretch::omega::StreamSettings settings;
	// As the command has it.
	settings.mPreferAccuracy = 1;
	engine->Begin(static_cast<float>(kSampleRate), &settings, static_cast<unsigned>(inSound[0].size()));
	engine->SetRatio(static_cast<float>(inRatio), static_cast<float>(inRatio));
	Sound output = MakeRoom(inSound, inRatio);
	// What follows the end is silent.
	Sound input = inSound;
	for (auto& channel : input)
	{
		channel.resize(channel.size() + 200000);
	}
	std::size_t taken = 0;
	std::vector<float const*> inputs(channels);
	std::vector<float*> outputs(channels);
	for (std::size_t done = 0; done < output[0].size();)
	{
		auto const count = static_cast<unsigned>(
			std::min<std::size_t>({kBlock, output[0].size() - done, engine->GetOutputLimit()}));
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			inputs[channel] = input[channel].data() + taken;
			outputs[channel] = output[channel].data() + done;
		}
		unsigned const needed = engine->GetInputNeeded(count);
		engine->Process(count, inputs.data(), outputs.data());
		taken += needed;
		done += count;
	}
	return output;
}

SN::InterfaceRef<SN::IAudioTimeScaler> MakeScaler(double inRatio, unsigned inChannels)
{
	constexpr unsigned frameSize = 2048;
	constexpr unsigned windowMode = 1;
	auto const scaler = SN::GetAudioTimeScalerFactory()->CreateAudioTimeScaler(SN::RenderQuality::kHigh);
	scaler->Init(inRatio, SN::FrameRate::FromSamplesPerSecond(static_cast<unsigned>(kSampleRate)), inChannels,
		1.0, frameSize, windowMode);
	return scaler;
}

// It cuts off at full scale, so it works a quarter as loud.
Sound StretchByScaler(Sound const& inSound, double inRatio)
{
	constexpr float level = 0.25f;
	auto const channels = static_cast<unsigned>(inSound.size());
	auto const scaler = MakeScaler(inRatio, channels);
	Sound output = MakeRoom(inSound, inRatio);
	dsp::AudioBuffer input(channels, kBlock);
	// What a block leads to, and a hop on either side of it.
	dsp::AudioBuffer scaled(channels, static_cast<unsigned>(kBlock * inRatio) + 1200);
	std::size_t done = 0;
	for (std::size_t start = 0; done < output[0].size(); start += kBlock)
	{
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			for (std::size_t i = 0; i < kBlock; ++i)
			{
				input.GetChannel(channel)[i] =
					start + i < inSound[channel].size() ? level * inSound[channel][start + i] : 0.0f;
			}
		}
		input.ClearSilenceFlags(dsp::SilenceFlags::All());
		std::size_t const count = std::min<std::size_t>(
			scaler->Process(input, scaled, kBlock, scaled.GetUseSize()), output[0].size() - done);
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			for (std::size_t i = 0; i < count; ++i)
			{
				output[channel][done + i] = scaled.GetChannel(channel)[i] / level;
			}
		}
		done += count;
	}
	return output;
}

#if defined(SONARO_HAS_SOUNDTOUCH)
Sound StretchBySoundTouch(Sound const& inSound, double inRatio)
{
	auto const channels = static_cast<unsigned>(inSound.size());
	soundtouch::SoundTouch stretcher;
	stretcher.setSampleRate(static_cast<unsigned>(kSampleRate));
	stretcher.setChannels(channels);
	stretcher.setTempo(1.0 / inRatio);
	Sound output = MakeRoom(inSound, inRatio);
	std::vector<float> frames(std::size_t{kBlock} * channels);
	std::size_t done = 0;
	auto const receive = [&]
	{
		while (unsigned const count = stretcher.receiveSamples(frames.data(), kBlock))
		{
			for (unsigned i = 0; i < count && done < output[0].size(); ++i, ++done)
			{
				for (unsigned channel = 0; channel < channels; ++channel)
				{
					output[channel][done] = frames[std::size_t{i} * channels + channel];
				}
			}
		}
	};
	for (std::size_t start = 0; start < inSound[0].size(); start += kBlock)
	{
		auto const count = static_cast<unsigned>(std::min<std::size_t>(kBlock, inSound[0].size() - start));
		for (unsigned i = 0; i < count; ++i)
		{
			for (unsigned channel = 0; channel < channels; ++channel)
			{
				frames[std::size_t{i} * channels + channel] = inSound[channel][start + i];
			}
		}
		stretcher.putSamples(frames.data(), count);
		receive();
	}
	stretcher.flush();
	receive();
	return output;
}
#endif

#if defined(SONARO_HAS_RUBBERBAND)
using RubberBand::RubberBandStretcher;

// All output that is there, the first ioDelay samples of it into nowhere.
void Receive(RubberBandStretcher& ioStretcher, Sound& outOutput, std::size_t& ioDone, std::size_t& ioDelay)
{
	Sound dropped(outOutput.size(), std::vector<float>(kBlock));
	std::vector<float*> outputs(outOutput.size());
	for (int available = ioStretcher.available(); available > 0 && ioDone < outOutput[0].size();
		 available = ioStretcher.available())
	{
		std::size_t const count = std::min(
			{static_cast<std::size_t>(available), std::size_t{kBlock}, outOutput[0].size() - ioDone});
		bool const isDropped = ioDelay > 0;
		for (std::size_t channel = 0; channel < outputs.size(); ++channel)
		{
			outputs[channel] = isDropped ? dropped[channel].data() : outOutput[channel].data() + ioDone;
		}
		std::size_t const got =
			ioStretcher.retrieve(outputs.data(), isDropped ? std::min(count, ioDelay) : count);
		ioDone += isDropped ? 0 : got;
		ioDelay -= isDropped ? got : 0;
	}
}

// In its real-time mode, as the engine has to work.
Sound StretchByRubberBand(Sound const& inSound, double inRatio, int inOptions)
{
	auto const channels = inSound.size();
	RubberBandStretcher stretcher(static_cast<std::size_t>(kSampleRate), channels,
		RubberBandStretcher::OptionProcessRealTime | RubberBandStretcher::OptionChannelsTogether | inOptions,
		inRatio);
	stretcher.setMaxProcessSize(kBlock);
	Sound output = MakeRoom(inSound, inRatio);
	// Silence before the sound, of which it drops the output, and after it.
	std::size_t const pad = stretcher.getPreferredStartPad();
	std::size_t delay = stretcher.getStartDelay();
	Sound input(channels);
	for (std::size_t channel = 0; channel < channels; ++channel)
	{
		input[channel].assign(pad, 0.0f);
		input[channel].insert(input[channel].end(), inSound[channel].begin(), inSound[channel].end());
		input[channel].resize(input[channel].size() + 100000);
	}
	std::vector<float const*> inputs(channels);
	std::size_t taken = 0;
	for (std::size_t done = 0; done < output[0].size() && taken < input[0].size();)
	{
		std::size_t const needed = std::min({std::max<std::size_t>(stretcher.getSamplesRequired(), 1),
			std::size_t{kBlock}, input[0].size() - taken});
		for (std::size_t channel = 0; channel < channels; ++channel)
		{
			inputs[channel] = input[channel].data() + taken;
		}
		stretcher.process(inputs.data(), needed, false);
		taken += needed;
		Receive(stretcher, output, done, delay);
	}
	return output;
}
#endif

std::vector<Stretcher> MakeStretchers()
{
	std::vector<Stretcher> stretchers;
	stretchers.push_back(
		{"Scaler", &StretchByScaler, [](double inRatio) { return MakeScaler(inRatio, 1)->GetRatio(); }});
	stretchers.push_back({"Omega", [](Sound const& inSound, double inRatio)
		{ return StretchByOmega(inSound, inRatio, OmegaEngineKind::kSplice); }});
	if (dsp::stretch::omega::IsOmegaEngineKindBuiltIn(OmegaEngineKind::kRubberBand))
	{
		stretchers.push_back({"Omega, R3", [](Sound const& inSound, double inRatio)
			{ return StretchByOmega(inSound, inRatio, OmegaEngineKind::kRubberBand); }});
	}
#if defined(SONARO_HAS_SOUNDTOUCH)
	stretchers.push_back({"SoundTouch", &StretchBySoundTouch});
#endif
#if defined(SONARO_HAS_RUBBERBAND)
	stretchers.push_back({"Rubber Band R2", [](Sound const& inSound, double inRatio)
		{ return StretchByRubberBand(inSound, inRatio, RubberBandStretcher::OptionEngineFaster); }});
	// Its detector of transients, which is on otherwise, resets the phases of plain tones all the time.
	stretchers.push_back({"Rubber Band R2, smooth", [](Sound const& inSound, double inRatio)
		{
			return StretchByRubberBand(inSound, inRatio,
				RubberBandStretcher::OptionEngineFaster | RubberBandStretcher::OptionTransientsSmooth);
		}});
	stretchers.push_back({"Rubber Band R3", [](Sound const& inSound, double inRatio)
		{ return StretchByRubberBand(inSound, inRatio, RubberBandStretcher::OptionEngineFiner); }});
#endif
	return stretchers;
}

} // namespace

std::vector<Stretcher> const& GetStretchers()
{
	static std::vector<Stretcher> const sStretchers = MakeStretchers();
	return sStretchers;
}

} // namespace StretchPeers
