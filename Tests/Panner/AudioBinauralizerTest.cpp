#include "Sonaro/GraphFactory.h"
#include "Support/Buffers.h"
#include "Support/Common.h"
#include "zorvaudiodsp/ambi/AmbisonicsBinauralizer.h"
#include "zorvaudiofilters/ambisonics/binauralizer/HRIR.h"

namespace SN::AudioBinauralizerTest
{

using namespace Testing;
using AudioBinauralizerFactory::CreateAudioBinauralizer;

constexpr unsigned kRate = 48000;
constexpr unsigned kFrames = 200;
using Heard = std::vector<std::vector<float>>;

dsp::AudioBuffer MakeField(unsigned inChannels = 4, unsigned inSeed = 1)
{
	dsp::AudioBuffer field(inChannels, kFrames);
	std::mt19937 random(inSeed);
	std::uniform_real_distribution<float> samples(-1.0f, 1.0f);
	for (unsigned channel = 0; channel < inChannels; ++channel)
	{
		std::generate_n(field.GetChannel(channel), kFrames, [&] { return samples(random); });
	}
	return field;
}

// The renderer by itself, with the default ears.
class Reference
{
public:
	Reference()
		: mEngine(kRate, kFrames, 1, dsp::ambi::ChannelOrdering::kACN, dsp::ambi::Normalization::kSN3D)
	{
		auto const ears = zorvaudiofilters::ambisonics::binauralizer::GetDefaultHRIR();
		mEngine.Load(ears->GetDescriptor(), ears->GetLeftData(), ears->GetRightData());
	}

	Heard Hear(dsp::AudioBuffer const& inField, dsp::ambi::EulerAngle const& inAngle = {})
	{
		Heard heard(2, std::vector<float>(inField.GetUseSize()));
		float* const outputs[] = {heard[0].data(), heard[1].data()};
		mEngine.Process(
			inAngle, inField.GetUseSize(), inField.GetNumChannels(), 2, inField.GetChannels(), outputs);
		return heard;
	}

private:
	dsp::ambi::AmbisonicsBinauralizer mEngine;
};

constexpr float kUntouched = 4711.0f;

Heard Process(IAudioBinauralizer& ioBinauralizer, dsp::AudioBuffer const& inField, unsigned inChannels = 2)
{
	dsp::AudioBuffer output = MakeBuffer(inChannels, kFrames, kUntouched);
	ioBinauralizer.Process(inField, output);
	return HeardChannels(output);
}

Heard Mix(dsp::AudioBuffer const& inField, unsigned inChannels)
{
	dsp::AudioBuffer output(inChannels, kFrames);
	AudioChannelMix::GetMixFunctionByChannels(
		static_cast<unsigned>(inField.GetNumChannels()), static_cast<int>(inChannels))(inField, output);
	return HeardChannels(output);
}

Heard const kLeftAlone(2, std::vector<float>(kFrames, kUntouched));

TEST(AudioBinauralizer, StartsInBypassAndWithoutAnEngine)
{
	auto const fresh = CreateAudioBinauralizer();
	EXPECT_TRUE(fresh->GetBypass());
	auto const field = MakeField();
	EXPECT_THROW(Process(*fresh, field), std::bad_function_call);
	fresh->GetProcessFunction(4, 2);
	EXPECT_EQ(Process(*fresh, field), Mix(field, 2));

	// Without an engine no channel is looked at.
	auto partlySilent = MakeField();
	partlySilent.MarkChannelSilent(1);
	fresh->SetBypass(false);
	EXPECT_EQ(Process(*fresh, field), kLeftAlone);
	EXPECT_EQ(Process(*fresh, partlySilent), kLeftAlone);
	fresh->Reset();

	// A name that nobody knows leaves it without ears, and an empty one gives it the default ones.
	fresh->SetHRIRName("somebody");
	fresh->Init(kRate, kFrames);
	EXPECT_EQ(Process(*fresh, field), kLeftAlone);
	fresh->SetHRIRName("");
	EXPECT_EQ(Process(*fresh, field), Reference().Hear(field));
	// The ears stay with another name; loading them again starts anew.
	fresh->SetHRIRName("somebody");
	EXPECT_EQ(fresh->GetHRIRName(), "somebody");
	EXPECT_EQ(Process(*fresh, field), Reference().Hear(field));
}

TEST(AudioBinauralizer, SilenceDecidesWhatIsRendered)
{
	auto const binauralizer =
		GraphFactory().CreateAudioBinauralizer({.mMaxFrames = kFrames, .mInputChannels = 5});
	Reference reference;
	auto const first = MakeField(5, 1);
	EXPECT_EQ(Process(*binauralizer, first), reference.Hear(first));

	// Neither a silent input nor one that is no field reaches the engine.
	auto const silent = MakeStaleBuffer(5, kFrames);
	dsp::AudioBuffer output = MakeBuffer(2, kFrames, kUntouched);
	binauralizer->Process(silent, output);
	EXPECT_TRUE(output.IsSilent());
	for (unsigned const channel : {0u, 3u})
	{
		auto field = MakeField(5, 2);
		field.MarkChannelSilent(channel);
		EXPECT_EQ(Process(*binauralizer, field), Mix(field, 2));
	}
	auto bypassed = MakeField(5, 2);
	binauralizer->SetBypass(true);
	EXPECT_EQ(Process(*binauralizer, bypassed), Mix(bypassed, 2));
	// All four are silent while the fifth one sounds: silence, in bypass as well.
	bypassed.SetSilenceFlags(dsp::SilenceFlags(0b01111));
	EXPECT_EQ(Process(*binauralizer, bypassed), Heard(2, std::vector<float>(kFrames)));

	// The fifth channel is none of the field.
	auto second = MakeField(5, 3);
	second.MarkChannelSilent(4);
	binauralizer->SetBypass(false);
	EXPECT_EQ(Process(*binauralizer, second), reference.Hear(second));
}

TEST(AudioBinauralizer, OrientationGoesToTheEnginesAngles)
{
	auto const field = MakeField();
	auto const binauralizer = GraphFactory().CreateAudioBinauralizer(
		{.mMaxFrames = kFrames, .mPitch = 11.0f, .mYaw = 22.0f, .mRoll = 33.0f});
	float pitch = 0.0f;
	float yaw = 0.0f;
	float roll = 0.0f;
	binauralizer->GetOrientation(pitch, yaw, roll);
	EXPECT_EQ(std::vector({pitch, yaw, roll}), std::vector({11.0f, 22.0f, 33.0f}));
	Reference reference;
	dsp::ambi::EulerAngle const angle{.mYaw = 22.0f, .mPitch = 11.0f, .mRoll = 33.0f};
	EXPECT_EQ(Process(*binauralizer, field), reference.Hear(field, angle));
	binauralizer->SetOrientation(-40.0f, 0.0f, 5.0f);
	dsp::ambi::EulerAngle const next{.mPitch = -40.0f, .mRoll = 5.0f};
	EXPECT_EQ(Process(*binauralizer, field), reference.Hear(field, next));
}

TEST(AudioBinauralizer, InitForgetsOnlyWithOtherValues)
{
	auto const field = MakeField();
	Reference reference;
	auto const atStart = reference.Hear(field);
	auto const goingOn = reference.Hear(field);
	ASSERT_NE(atStart, goingOn);
	struct Case
	{
		char const* mName;
		void (*mAct)(IAudioBinauralizer&);
		bool mForgets;
	};
	Case const cases[] = {
		{"nothing", [](IAudioBinauralizer&) {}, false},
		{"the same", [](IAudioBinauralizer& io) { io.Init(kRate, kFrames); }, false},
		{"other blocks", [](IAudioBinauralizer& io) { io.Init(kRate, kFrames + 1); }, true},
		{"there and back", [](IAudioBinauralizer& io) { io.Init(44100, kFrames), io.Init(kRate, kFrames); },
			true},
		{"reset", [](IAudioBinauralizer& io) { io.Reset(); }, true},
		{"the name that it has", [](IAudioBinauralizer& io) { io.SetHRIRName(""); }, false},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		auto const binauralizer = GraphFactory().CreateAudioBinauralizer({.mMaxFrames = kFrames});
		Process(*binauralizer, field);
		test.mAct(*binauralizer);
		EXPECT_EQ(Process(*binauralizer, field), test.mForgets ? atStart : goingOn);
	}
}

TEST(AudioBinauralizer, EarsReachOtherLayouts)
{
	auto field = MakeField();
	dsp::AudioBuffer ears(2, kFrames);
	Heard const wanted = Reference().Hear(field);
	std::copy(wanted[0].begin(), wanted[0].end(), ears.GetChannel(0));
	std::copy(wanted[1].begin(), wanted[1].end(), ears.GetChannel(1));
	for (unsigned const channels : {1u, 6u, 8u})
	{
		auto const binauralizer =
			GraphFactory().CreateAudioBinauralizer({.mMaxFrames = kFrames, .mOutputChannels = channels});
		EXPECT_EQ(Process(*binauralizer, field, channels), Mix(ears, channels)) << channels;
	}
	// More channels than were asked for keep what they have; fewer than two get silence.
	auto const binauralizer = GraphFactory().CreateAudioBinauralizer({.mMaxFrames = kFrames});
	EXPECT_EQ(Process(*binauralizer, field, 1), Heard(1, std::vector<float>(kFrames)));
	Heard three = wanted;
	three.emplace_back(kFrames, kUntouched);
	EXPECT_EQ(Process(*binauralizer, field, 3), three);
}

TEST(AudioBinauralizer, WhatTheInputDoesNotFillIsZero)
{
	auto field = MakeField();
	field.SetUseSize(120);
	Heard wanted = Reference().Hear(field);
	wanted[0].resize(kFrames);
	wanted[1].resize(kFrames);
	auto const binauralizer = GraphFactory().CreateAudioBinauralizer({.mMaxFrames = kFrames});
	EXPECT_EQ(Process(*binauralizer, field), wanted);

	// A silent window of a longer output: the rest of that stays silent.
	binauralizer->Reset();
	auto output = MakeStaleBuffer(2, 2 * kFrames);
	auto const window = WindowOf(output, kFrames);
	binauralizer->Process(field, *window);
	Heard whole(2, std::vector<float>(kFrames));
	whole[0].insert(whole[0].end(), wanted[0].begin(), wanted[0].end());
	whole[1].insert(whole[1].end(), wanted[1].begin(), wanted[1].end());
	EXPECT_EQ(HeardChannels(output), whole);

	// A mix ends with the largest block.
	auto const mixing = GraphFactory().CreateAudioBinauralizer({.mMaxFrames = kFrames, .mOutputChannels = 6});
	dsp::AudioBuffer longer = MakeBuffer(6, 2 * kFrames, kUntouched);
	mixing->Process(MakeField(), longer);
	for (std::vector<float> const& channel : HeardChannels(longer))
	{
		EXPECT_EQ(std::count(channel.begin() + kFrames, channel.end(), 0.0f), kFrames);
	}
}

TEST(AudioBinauralizer, ProcessFunctionKeepsItAliveWhileTheHeadTurns)
{
	auto binauralizer = GraphFactory().CreateAudioBinauralizer({.mMaxFrames = kFrames});
	auto const process = binauralizer->GetProcessFunction(4, 2);
	std::atomic<bool> ends{false};
	std::thread turner(
		[&, shared = binauralizer->GetSharedFromThis()]
		{
			for (float angle = 0.0f; !ends; angle += 1.0f)
			{
				shared->SetOrientation(angle, -angle, 0.5f * angle);
				shared->SetBypass(static_cast<int>(angle) % 2 == 0);
			}
		});
	binauralizer.Reset();
	auto const field = MakeField();
	dsp::AudioBuffer output(2, kFrames);
	for (unsigned block = 0; block < 200; ++block)
	{
		process(field, output);
	}
	ends = true;
	turner.join();
	auto const isHeard = [](float inSample) { return std::fabs(inSample) < 20.0f; };
	EXPECT_TRUE(std::all_of(output.GetChannel(0), output.GetChannel(0) + kFrames, isHeard));
}

} // namespace SN::AudioBinauralizerTest
