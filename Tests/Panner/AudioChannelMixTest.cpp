#include "Sonaro/AudioChannelMix.h"

#include "Sonaro/AudioChannelMatrixMasks.h"
#include "Support/Engine.h"

#include <optional>

namespace SN::AudioChannelMix::AudioChannelMixTest
{

using zorvmediatypes::CreateMultichannelLayout;

constexpr float kStale = 4711.0f;

float FromBits(unsigned inBits)
{
	return std::bit_cast<float>(inBits);
}

// The coefficients of one kind of loop.
struct Constants
{
	float mThird;
	float mRear;
	float mTwoThirds;
};

Constants const kFrameByFrame{FromBits(0x3EAAAA9F), FromBits(0x3EA8F5C3), FromBits(0x3F2AAA9F)};
Constants const kInGroups{FromBits(0x3EAAAAAB), FromBits(0x3EAAAAAB), FromBits(0x3F2AAAAB)};
float const kSixth = FromBits(0x3E2AAAAB);

using Frame = std::vector<float>;

// One frame of a mix, by its type from 1 to 4: the outputs for the inputs L, R, C, F, Ls, Rs. Each operation is
// rounded apart, as nothing is contracted.
Frame MixFrame(unsigned inType, unsigned inOutputs, Constants const& k, Frame const& in)
{
	float const front = k.mThird * (in[0] + in[1] + in[2]);
	if (inOutputs == 1)
	{
		float const mixes[] = {front, 0.75f * (front + kSixth * (in[4] + in[5])),
			FromBits(0x3F5B6D87) * (front + kSixth * in[3]),
			k.mTwoThirds * (kSixth * (in[4] + in[5] + in[3]) + front)};
		return {mixes[inType - 1]};
	}
	Frame out;
	for (unsigned side = 0; side < 2; ++side)
	{
		float const pair = 0.75f * in[side] + 0.5f * in[2];
		float const mixes[] = {0.8f * pair, FromBits(0x3F21AE92) * (pair + k.mRear * in[4 + side]),
			FromBits(0x3F21AE92) * (pair + k.mRear * in[3]),
			FromBits(0x3F0590B0) * (pair + k.mRear * (in[4 + side] + in[3]))};
		out.push_back(mixes[inType - 1]);
	}
	return out;
}

class RestoredMixdown
{
public:
	~RestoredMixdown() { Set51MixdownType(1); }
};

// Folds random frames, from windows or from owned buffers, which decides about the coefficients.
void ExpectFold(unsigned inType, unsigned inOutputs, unsigned inFrames, unsigned long long inSilent,
	bool inIsWindow, std::mt19937& ioRandom)
{
	std::uniform_real_distribution<float> sample(-1.0f, 1.0f);
	dsp::AudioBuffer input = MakeBuffer(6, inFrames + 1, kStale);
	dsp::AudioBuffer output = MakeStaleBuffer(inOutputs, inFrames + 1);
	Samples expected(inOutputs);
	for (unsigned i = 1; i <= inFrames; ++i)
	{
		Frame frame(6, 0.0f);
		for (unsigned channel = 0; channel < 6; ++channel)
		{
			if ((inSilent >> channel & 1) == 0)
			{
				input.GetChannel(channel)[i] = frame[channel] = sample(ioRandom);
			}
		}
		Frame const mixed = MixFrame(inType, inOutputs, inIsWindow ? kFrameByFrame : kInGroups, frame);
		for (unsigned channel = 0; channel < inOutputs; ++channel)
		{
			expected[channel].push_back(mixed[channel]);
		}
	}
	input.SetSilenceFlags(dsp::SilenceFlags(inSilent));
	auto const inWindow = WindowOf(input, 1);
	auto const outWindow = WindowOf(output, 1);
	dsp::AudioBuffer inCopy(*inWindow);
	dsp::AudioBuffer outCopy(*outWindow);
	dsp::AudioBuffer& result = inIsWindow ? *outWindow : outCopy;
	GetMixFunction(VX::kAudioChannelLayout_51,
		inOutputs == 1 ? VX::kAudioChannelLayout_Mono : VX::kAudioChannelLayout_Stereo)(
		inIsWindow ? *inWindow : inCopy, result);
	ASSERT_FALSE(result.IsChannelSilent(0) || result.IsChannelSilent(inOutputs - 1));
	ASSERT_TRUE(Same(HeardChannels(result), expected));
}

TEST(AudioChannelMix, FoldsOf51HaveTheTwoSetsOfCoefficientsToTheBit)
{
	RestoredMixdown const restored;
	std::mt19937 random(31);
	for (unsigned run = 0; run < 5 * 2 * 2 * 20 * 4; ++run)
	{
		constexpr unsigned long long kSilent[] = {0, 0b100010, 0b011101, 0b001000};
		// Types beyond the fourth count as the third.
		unsigned const type = run % 5 + 1;
		unsigned const outputs = run / 5 % 2 + 1;
		unsigned const frames = run / 20 % 20 + 1;
		SCOPED_TRACE(Message() << type << " to " << outputs << ", " << frames << " frames, run " << run);
		Set51MixdownType(type % 5);
		ExpectFold(type == 5 ? 3 : type, outputs, frames, kSilent[run / 400], run / 10 % 2 == 1, random);
		if (HasFatalFailure())
		{
			return;
		}
	}
}

// Which conversion is chosen, seen by what it does with a 1 on one input after the other: the column of
// gains that it has, or nothing where the output is flagged.
using Gains = std::vector<std::vector<float>>;

Gains GetGains(MixFunction const& inMix, unsigned inInputs, unsigned inOutputs)
{
	Gains gains(inOutputs, std::vector<float>(inInputs));
	for (unsigned from = 0; from < inInputs; ++from)
	{
		dsp::AudioBuffer input(inInputs, 4);
		dsp::AudioBuffer output(inOutputs, 4);
		std::fill_n(input.GetChannel(from), 4, 1.0f);
		inMix(input, output);
		for (unsigned to = 0; to < inOutputs; ++to)
		{
			gains[to][from] = Heard(output, to)[3];
		}
	}
	return gains;
}

Gains Straight(unsigned inInputs, unsigned inOutputs)
{
	Gains gains(inOutputs, std::vector<float>(inInputs, 0.0f));
	for (unsigned channel = 0; channel < std::min(inInputs, inOutputs); ++channel)
	{
		gains[channel][channel] = 1.0f;
	}
	return gains;
}

TEST(AudioChannelMix, LayoutsAndCountsChooseTheConversion)
{
	struct Case
	{
		char const* mName;
		AudioChannelLayout mInput;
		AudioChannelLayout mOutput;
		// By layouts, and by counts where that is another.
		Gains mGains;
		std::optional<Gains> mByCounts;
	};
	auto const& mono = VX::kAudioChannelLayout_Mono;
	auto const& stereo = VX::kAudioChannelLayout_Stereo;
	auto const& surround = VX::kAudioChannelLayout_51;
	auto const& many = VX::kAudioChannelLayout_Multichannel;
	float const third = std::bit_cast<float>(0x3EAAAAABu);
	float const h = 0.70710678f;
	float const l = 0.75f * 0.8f;
	float const c = 0.5f * 0.8f;
	Case const cases[] = {
		{"mono to mono", mono, mono, {{1}}, {}},
		{"mono to stereo, full level", mono, stereo, {{1}, {1}}, {}},
		{"mono to 5.1, by place", mono, surround, {{0}, {0}, {1}, {0}, {0}, {0}},
			Gains{{1}, {0}, {0}, {0}, {0}, {0}}},
		{"stereo to mono, the mean", stereo, mono, {{0.5f, 0.5f}}, {}},
		{"stereo to stereo", stereo, stereo, Straight(2, 2), {}},
		{"stereo to 5.1", stereo, surround, Straight(2, 6), {}},
		{"5.1 to mono", surround, mono, {{third, third, third, 0, 0, 0}}, {}},
		{"5.1 to stereo", surround, stereo, {{l, 0, c, 0, 0, 0}, {0, l, c, 0, 0, 0}}, {}},
		{"5.1 to 5.1", surround, surround, Straight(6, 6), {}},
		{"5.1 to three places", surround,
			{AudioChannelDescription::kLeft, AudioChannelDescription::kRight,
				AudioChannelDescription::kLowFrequency},
			{{1, 0, h, 0, h, 0}, {0, 1, h, 0, 0, h}, {0, 0, 0, 1, 0, 0}}, Straight(6, 3)},
		{"32 to mono", many, mono, Straight(32, 1), {}},
		{"32 to stereo", many, stereo, Straight(32, 2), {}},
		{"32 to 5.1", many, surround, Straight(32, 6), {}},
		{"32 to 32", many, many, Straight(32, 32), {}},
		{"32 to 40", many, CreateMultichannelLayout(40), Straight(32, 40), {}},
		{"3 to 3", CreateMultichannelLayout(3), CreateMultichannelLayout(3), Straight(3, 3), {}},
		{"3 to 4", CreateMultichannelLayout(3), CreateMultichannelLayout(4), Straight(3, 4), {}},
		{"stereo to 4", stereo, CreateMultichannelLayout(4), Straight(2, 4), {}},
		{"5.1 to 32", surround, many, Straight(6, 32), {}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		auto const inputs = static_cast<unsigned>(test.mInput.size());
		auto const outputs = static_cast<unsigned>(test.mOutput.size());
		EXPECT_EQ(GetGains(GetMixFunction(test.mInput, test.mOutput), inputs, outputs), test.mGains);
		EXPECT_EQ(GetGains(GetMixFunctionByChannels(inputs, static_cast<int>(outputs)), inputs, outputs),
			test.mByCounts.value_or(test.mGains));
	}
	EXPECT_TRUE(GetMixFunctionByChannels(0, -1)) << "no counts, and yet a function";
}

TEST(AudioChannelMix, RefusalsAndSilenceTouchNoSample)
{
	auto const& surround = VX::kAudioChannelLayout_51;
	auto const& stereo = VX::kAudioChannelLayout_Stereo;
	auto const& many = VX::kAudioChannelLayout_Multichannel;
	struct Case
	{
		char const* mName;
		AudioChannelLayout mInput;
		AudioChannelLayout mOutput;
		unsigned mInputFrames;
		bool mIsSilent;
	};
	Case const cases[] = {
		{"silent fold", surround, stereo, 8, true},
		{"long fold", surround, stereo, 9, false},
		{"silent mono", VX::kAudioChannelLayout_Mono, stereo, 8, true},
		{"long stereo", stereo, VX::kAudioChannelLayout_Mono, 9, false},
		{"silent matrix", stereo, surround, 8, true},
		{"long matrix", stereo, surround, 9, false},
		{"silent many", many, stereo, 8, true},
		{"long many", many, stereo, 9, false},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		dsp::AudioBuffer input(test.mInput.size(), test.mInputFrames);
		auto output = MakeBuffer(test.mOutput.size(), 8, kStale);
		input.SetSilenceFlags(dsp::SilenceFlags(test.mIsSilent ? ~0ull : 0ull));
		GetMixFunction(test.mInput, test.mOutput)(input, output);
		EXPECT_TRUE(output.IsSilent());
		EXPECT_EQ(output.GetChannel(0)[0], kStale);
	}

	// Sound that the mixdown leaves out folds to zeros, which are not flagged.
	dsp::AudioBuffer output(2, 8);
	for (AudioChannelLayout const& layout : {VX::kAudioChannelLayout_Mono, stereo})
	{
		auto input = MakeBuffer(6, 8, kStale);
		input.SetSilenceFlags(dsp::SilenceFlags(0b100111));
		FillWith(output, kStale);
		GetMixFunction(surround, layout)(input, output);
		EXPECT_FALSE(output.IsChannelSilent(0));
		EXPECT_EQ(output.GetChannel(layout.size() - 1)[0], 0.0f);
		EXPECT_EQ(input.GetChannel(0)[0], 0.0f) << "what is read under a flag is cleared";
		EXPECT_EQ(input.GetChannel(5)[0], kStale) << "and what is not read stays";
	}

	// A short input clears the flags of a longer output only after the rest became zeros.
	FillWith(output, kStale);
	output.Zero();
	GetMixFunction(VX::kAudioChannelLayout_Mono, stereo)(MakeBuffer(1, 3, 0.5f), output);
	EXPECT_EQ(Heard(output, 1), (Frame{0.5f, 0.5f, 0.5f, 0, 0, 0, 0, 0}));
}

TEST(AudioChannelMix, GroupsNeedBothBuffersAndClearedFlagsAllChannels)
{
	MixFunction const mix = GetMixFunction(VX::kAudioChannelLayout_51, VX::kAudioChannelLayout_Mono);
	for (unsigned windows = 0; windows < 4; ++windows)
	{
		SCOPED_TRACE(windows);
		dsp::AudioBuffer input(6, 8);
		// One channel more than the mix writes.
		dsp::AudioBuffer output = MakeStaleBuffer(2, 8);
		std::fill_n(input.GetChannel(0), 8, 1.0f);
		auto const inWindow = WindowOf(input);
		auto const outWindow = WindowOf(output);
		mix(windows & 1 ? *inWindow : input, windows & 2 ? *outWindow : output);
		EXPECT_EQ(output.GetChannel(0)[7], (windows == 0 ? kInGroups : kFrameByFrame).mThird);
		EXPECT_FALSE(output.IsChannelSilent(1));
		EXPECT_EQ(output.GetChannel(1)[7], 0.0f);
	}
}

// The row of gains against the sum formed by hand, over all mixtures of silent inputs, gains of 0 and 1
// and others, and stale outputs.
TEST(AudioChannelMix, TheMatrixSumsColumnByColumn)
{
	AudioChannelLayout const places{AudioChannelDescription::kLeft, AudioChannelDescription::kRight,
		AudioChannelDescription::kCenter, AudioChannelDescription::kLeftSurround};
	MixFunction const mix =
		GetMixFunction(places, {AudioChannelDescription::kRight, AudioChannelDescription::kLeft,
								   AudioChannelDescription::kLowFrequency});
	float const h = 0.70710678f;
	float const gains[3][4] = {{0, 1, h, 0}, {1, 0, h, h}, {0, 0, 0, 0}};
	for (unsigned long long silent = 0; silent < 15; ++silent)
	{
		SCOPED_TRACE(silent);
		auto input = MakeBuffer(4, 13, kStale);
		auto output = MakeBuffer(3, 13, kStale);
		output.MarkChannelSilent(1);
		float samples[4] = {};
		for (unsigned channel = 0; channel < 4; ++channel)
		{
			if ((silent >> channel & 1) == 0)
			{
				samples[channel] = 0.1f * static_cast<float>(channel + 1);
				std::fill_n(input.GetChannel(channel), 13, samples[channel]);
			}
		}
		input.SetSilenceFlags(dsp::SilenceFlags(silent));
		mix(input, output);
		for (unsigned row = 0; row < 3; ++row)
		{
			float sum = 0.0f;
			for (unsigned column = 0; column < 4; ++column)
			{
				sum += gains[row][column] * samples[column];
			}
			EXPECT_EQ(Heard(output, row)[12], sum) << row;
		}
		EXPECT_TRUE(output.IsChannelSilent(2));
	}
}

TEST(AudioChannelMatrixMasks, NameTheChannelsModulo64)
{
	AudioChannelMatrix const matrix{{0, {1, 2}}, {3, {2}}, {67, {}}};
	EXPECT_EQ(EnumerateInputChannels(matrix).GetMask(), 0b1001ull);
	EXPECT_EQ(EnumerateOutputChannels(matrix).GetMask(), 0b110ull);
	EXPECT_EQ(EnumerateInputChannels({{67, {66}}}).GetMask(), 0b1000ull);
	EXPECT_EQ(EnumerateOutputChannels({{67, {66}}}).GetMask(), 0b100ull);
	EXPECT_FALSE(EnumerateInputChannels({}).Any());
	EXPECT_TRUE(AudioMatrixToString(matrix).empty());
}

} // namespace SN::AudioChannelMix::AudioChannelMixTest
