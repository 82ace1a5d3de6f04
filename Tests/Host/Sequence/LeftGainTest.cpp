// A fader right before a pan leaves its gain to it, so that both multiply in one pass. A meter between the two keeps
// them apart, which must not change a bit: not a sign of zero, and nothing that is not a number.

#include "MemoryMedia.h"
#include "Sonaro/IAudioMeterSetter.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "Support/Answers.h"
#include "Support/Pull.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <utility>

namespace SonaroHost::Sequence::Testing::LeftGainTest
{
namespace
{

using SN::Testing::At;
using SN::Testing::k48000Hz;
using SN::Testing::Samples;

constexpr unsigned kFrames = 2000;

class DeafMeter final : public SN::Testing::Answers<SN::IAudioMeterSetter>
{
public:
	void Init(SN::FrameRate const&, unsigned) override {}
	void SetMeterData(dsp::AudioBuffer const&, SN::TickTime const&) override {}
	void Shutdown() override {}
	void Reset() override {}
};

// Values that products round, of both signs, with zeros of both among them, and very small ones.
float GetSample(unsigned inChannel, unsigned inFrame)
{
	unsigned const number = (inFrame * 2u + inChannel) * 2654435761u >> 8;
	float const scale = number % 7 == 0 ? 0.0f : number % 5 == 0 ? 1e-38f : 1.0f;
	return (static_cast<float>(number % 4001) / 2000.0f - 1.0f) * scale;
}

Clip MakeSound(unsigned inChannels)
{
	MemoryMedia::Samples samples(inChannels);
	for (unsigned channel = 0; channel < inChannels; ++channel)
	{
		for (unsigned frame = 0; frame < kFrames; ++frame)
		{
			samples[channel].push_back(GetSample(channel, frame));
		}
	}
	return {std::make_shared<MemoryMedia const>(48000, samples), 0, {}};
}

NumberParameter Rise(double inFrom, double inTo)
{
	auto const parameter = AutomationParameter<float>::Create(1.0f);
	parameter->SetCurve(std::make_shared<AutomationCurve const>(
		std::vector<AutomationPoint>{{At(300), inFrom}, {At(1100), inTo}}));
	return parameter;
}

NumberParameter Still(float inValue)
{
	return AutomationParameter<float>::Create(inValue);
}

struct Case
{
	char const* mName;
	unsigned mChannels;
	NumberParameter mGain;
	std::optional<bool> mMute;
	NumberParameter mPan;
	// Of an effect before the fader, in frames.
	std::int64_t mLatency = 0;
};

std::vector<Case> MakeCases()
{
	constexpr float kInfinity = std::numeric_limits<float>::infinity();
	return {
		{"both stand", 2, Still(0.7f), {}, Still(0.3f)},
		{"both stand, mono", 1, Still(-0.7f), {}, Still(0.8f)},
		{"no gain", 2, {}, {}, Still(0.3f)},
		{"unity", 2, Still(1.0f), {}, Still(0.3f)},
		{"middle", 2, Still(0.7f), false, Still(0.5f)},
		{"closed", 2, Still(0.0f), {}, Still(0.3f)},
		{"muted", 2, Still(0.7f), true, Still(0.3f)},
		{"one side", 2, Still(0.7f), {}, Still(1.0f)},
		{"infinite", 2, Still(kInfinity), {}, Still(0.0f)},
		{"small", 2, Still(1e-30f), {}, Still(0.9999f)},
		{"gain moves", 2, Rise(0.0, 1.5), {}, Still(0.3f)},
		{"pan moves", 2, Still(0.7f), {}, Rise(0.1, 0.9)},
		{"pan moves, mono", 1, Still(0.7f), {}, Rise(0.0, 1.0)},
		{"both move", 2, Rise(1.0, 0.0), {}, Rise(1.0, 0.0)},
		{"late", 2, Still(0.7f), {}, Rise(0.1, 0.9), 150},
	};
}

// The chain belongs to the track, or to an item of it.
Description MakeDescription(Case const& inCase, bool inIsOfItem, bool inIsKeptApart)
{
	Chain chain;
	if (inCase.mLatency != 0)
	{
		chain.mStages.emplace_back(Effect{"late", LatentEffect{inCase.mLatency}});
	}
	chain.mStages.emplace_back(Fader{
		inCase.mGain, inCase.mMute ? AutomationParameter<bool>::Create(*inCase.mMute) : SwitchParameter()});
	if (inIsKeptApart)
	{
		chain.mStages.emplace_back(Meter{zorvcore::classref::MakeObject<DeafMeter>()});
	}
	chain.mPan = inCase.mPan;
	Item item;
	item.mEnd = At(kFrames);
	item.mContent = MakeSound(inCase.mChannels);
	Track track;
	track.mLayout = !inIsOfItem && inCase.mChannels == 1 ? zorvmediatypes::CreateMonoChannelLayout()
														 : VX::kAudioChannelLayout_Stereo;
	(inIsOfItem ? item.mChain : track.mChain) = chain;
	track.mItems = {item};
	Description description;
	description.mLayout = VX::kAudioChannelLayout_Stereo;
	description.mTracks = {track};
	return description;
}

Samples Render(Description const& inDescription, SN::Testing::BlockSizes const& inBlocks, bool inIsCloned)
{
	RenderContextScope const context(256, SN::kTimeMax, SN::ImmutableString("test"));
	SequenceGraph const graph(inDescription, context.Get(), k48000Hz);
	SN::InterfaceRef<SN::IAudioGenerator> const generator = graph.GetGenerator();
	generator->InitializeAudioFilters();
	generator->Preroll(SN::kTimeZero, false);
	Samples const first = SN::Testing::Pull(*generator, {0, kFrames, 2}, inBlocks);
	if (!inIsCloned)
	{
		return first;
	}
	// The original goes on beside its clone.
	auto const clone = generator->Clone();
	clone->InitializeAudioFilters();
	clone->Preroll(SN::kTimeZero, false);
	Samples result = SN::Testing::Pull(*clone, {0, 1000, 2}, inBlocks);
	SN::Testing::Pull(*generator, {100, 300, 2}, inBlocks);
	Samples const rest = SN::Testing::Pull(*clone, {1000, kFrames - 1000, 2}, inBlocks);
	for (std::size_t channel = 0; channel < 2; ++channel)
	{
		result[channel].insert(result[channel].end(), rest[channel].begin(), rest[channel].end());
	}
	return result;
}

TEST(LeftGain, GivesTheBitsOfFaderAndPanInTurn)
{
	for (Case const& test : MakeCases())
	{
		for (bool const isOfItem : {false, true})
		{
			for (bool const isCloned : {false, true})
			{
				for (unsigned const largest : {256u, 37u})
				{
					auto const render = [&](bool inIsKeptApart)
					{
						return Render(MakeDescription(test, isOfItem, inIsKeptApart),
							SN::Testing::RandomBlocks(5, largest), isCloned);
					};
					EXPECT_TRUE(SN::Testing::Same(render(false), render(true)))
						<< test.mName << (isOfItem ? ", on the item" : "") << (isCloned ? ", cloned, " : ", ")
						<< largest;
				}
			}
		}
	}
}

// Were the gain not left, nothing above would be put to the test; were it lost, both would be silent alike.
TEST(LeftGain, MultipliesEveryFrame)
{
	Case const test{"", 2, Still(0.5f), {}, Still(0.75f)};
	Samples const samples = Render(MakeDescription(test, false, false), SN::Testing::BlocksOf(200), false);
	for (unsigned frame = 0; frame < kFrames; ++frame)
	{
		ASSERT_EQ(samples[1][frame], GetSample(1, frame) * 0.5f) << frame;
	}
}

} // namespace
} // namespace SonaroHost::Sequence::Testing::LeftGainTest
