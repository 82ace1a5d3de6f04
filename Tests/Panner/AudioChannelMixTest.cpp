#include "Sonaro/AudioChannelMix.h"

#include "Sonaro/AudioChannelMatrixMasks.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace SN::AudioChannelMix
{
namespace
{

using zorvmediatypes::CreateMultichannelLayout;

// A float whose every operation is rounded apart.
struct Single
{
	Single(float inValue)
		: mValue(inValue)
	{
	}
	static Single FromBits(unsigned inBits) { return std::bit_cast<float>(inBits); }
	friend Single operator+(Single inA, Single inB)
	{
		float volatile const sum = inA.mValue + inB.mValue;
		return sum;
	}
	friend Single operator*(Single inA, Single inB)
	{
		float volatile const product = inA.mValue * inB.mValue;
		return product;
	}

	float mValue;
};

// The coefficients of one kind of loop.
struct Constants
{
	Single mThird;
	Single mRear;
	Single mTwoThirds;
};

Constants const kFrameByFrame{
	Single::FromBits(0x3EAAAA9F), Single::FromBits(0x3EA8F5C3), Single::FromBits(0x3F2AAA9F)};
Constants const kInGroups{
	Single::FromBits(0x3EAAAAAB), Single::FromBits(0x3EAAAAAB), Single::FromBits(0x3F2AAAAB)};
Single const kSixth = Single::FromBits(0x3E2AAAAB);

using Frame = std::vector<float>;

// One frame of a mix, by its type from 1 to 4: the outputs for the inputs L, R, C, F, Ls, Rs.
Frame MixFrame(unsigned inType, unsigned inOutputs, Constants const& k, Frame const& in)
{
	Single const front = k.mThird * (Single(in[0]) + in[1] + in[2]);
	if (inOutputs == 1)
	{
		switch (inType)
		{
		case 1:
			return {front.mValue};
		case 2:
			return {(Single(0.75f) * (front + kSixth * (Single(in[4]) + in[5]))).mValue};
		case 3:
			return {(Single::FromBits(0x3F5B6D87) * (front + kSixth * in[3])).mValue};
		default:
			return {(k.mTwoThirds * (kSixth * (Single(in[4]) + in[5] + in[3]) + front)).mValue};
		}
	}
	Frame out;
	for (unsigned side = 0; side < 2; ++side)
	{
		Single const pair = Single(0.75f) * in[side] + Single(0.5f) * in[2];
		switch (inType)
		{
		case 1:
			out.push_back((Single(0.8f) * pair).mValue);
			break;
		case 2:
			out.push_back((Single::FromBits(0x3F21AE92) * (pair + k.mRear * in[4 + side])).mValue);
			break;
		case 3:
			out.push_back((Single::FromBits(0x3F21AE92) * (pair + k.mRear * in[3])).mValue);
			break;
		default:
			out.push_back(
				(Single::FromBits(0x3F0590B0) * (pair + k.mRear * (Single(in[4 + side]) + in[3]))).mValue);
		}
	}
	return out;
}

class RestoredMixdown
{
public:
	~RestoredMixdown() { Set51MixdownType(1); }
};

constexpr float kStale = 4711.0f;

void FillStale(dsp::AudioBuffer& outBuffer)
{
	for (unsigned channel = 0; channel < outBuffer.GetNumChannels(); ++channel)
	{
		std::fill_n(outBuffer.GetChannel(channel), outBuffer.GetUseSize(), kStale);
	}
}

float RandomSample(std::mt19937& ioRandom)
{
	return std::uniform_real_distribution<float>(-1.0f, 1.0f)(ioRandom);
}

// Whether a mix reads owned buffers or windows into them, which decides about the coefficients.
enum class Memory
{
	kOwned,
	kWindow,
};

TEST(AudioChannelMix, FoldsOf51HaveTheTwoSetsOfCoefficientsToTheBit)
{
	RestoredMixdown const restored;
	std::mt19937 random(31);
	for (unsigned type = 1; type <= 5; ++type)
	{
		Set51MixdownType(type % 5);
		for (unsigned const outputs : {1u, 2u})
		{
			MixFunction const mix = GetMixFunction(VX::kAudioChannelLayout_51,
				outputs == 1 ? VX::kAudioChannelLayout_Mono : VX::kAudioChannelLayout_Stereo);
			for (Memory const memory : {Memory::kOwned, Memory::kWindow})
			{
				for (unsigned frames = 1; frames < 21; ++frames)
				{
					for (unsigned long long const silent : {0ull, 0b100010ull, 0b011101ull, 0b001000ull})
					{
						SCOPED_TRACE(std::to_string(type) + " to " + std::to_string(outputs) + ", " +
									 std::to_string(frames) + " frames, silent " + std::to_string(silent));
						dsp::AudioBuffer input(6, frames + 1);
						dsp::AudioBuffer output(outputs, frames + 1);
						FillStale(input);
						FillStale(output);
						output.Zero();
						std::vector<Frame> expected;
						for (unsigned i = 1; i <= frames; ++i)
						{
							Frame frame(6, 0.0f);
							for (unsigned channel = 0; channel < 6; ++channel)
							{
								if ((silent >> channel & 1) == 0)
								{
									frame[channel] = RandomSample(random);
									input.GetChannel(channel)[i] = frame[channel];
								}
							}
							expected.push_back(MixFrame(type == 5 ? 3 : type, outputs,
								memory == Memory::kOwned ? kInGroups : kFrameByFrame, frame));
						}
						input.SetSilenceFlags(dsp::SilenceFlags(silent));
						dsp::AudioSubBuffer inWindow;
						dsp::AudioSubBuffer outWindow;
						inWindow.Init(6);
						outWindow.Init(outputs);
						inWindow.Assign(input, 1);
						outWindow.Assign(output, 1);
						if (memory == Memory::kWindow)
						{
							mix(inWindow, outWindow);
						}
						else
						{
							dsp::AudioBuffer copy(6, frames);
							copy.CopyFrom(inWindow);
							dsp::AudioBuffer result(outputs, frames);
							result.Zero();
							mix(copy, result);
							outWindow.CopyFrom(result);
						}
						for (unsigned channel = 0; channel < outputs; ++channel)
						{
							ASSERT_FALSE(outWindow.IsChannelSilent(channel));
							for (unsigned i = 0; i < frames; ++i)
							{
								ASSERT_EQ(outWindow.GetChannel(channel)[i], expected[i][channel])
									<< "frame " << i << ", channel " << channel;
							}
						}
					}
				}
			}
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
		for (unsigned i = 0; i < 4; ++i)
		{
			input.GetChannel(from)[i] = 1.0f;
		}
		inMix(input, output);
		for (unsigned to = 0; to < inOutputs; ++to)
		{
			gains[to][from] = output.IsChannelSilent(to) ? 0.0f : output.GetChannel(to)[3];
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

TEST(AudioChannelMix, AChosenConversionKeepsItsMixdown)
{
	RestoredMixdown const restored;
	EXPECT_EQ(Get51MixdownType(), 1u);
	auto const before = GetMixFunctionByChannels(6, 1);
	Set51MixdownType(2);
	auto const after = GetMixFunctionByChannels(6, 1);
	EXPECT_EQ(Get51MixdownType(), 2u);
	Set51MixdownType(4);
	EXPECT_EQ(GetGains(before, 6, 1)[0][4], 0.0f);
	EXPECT_EQ(GetGains(after, 6, 1)[0][4], 0.75f * std::bit_cast<float>(0x3E2AAAABu));
	EXPECT_EQ(GetGains(after, 6, 1)[0][3], 0.0f);
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
		dsp::AudioBuffer output(test.mOutput.size(), 8);
		FillStale(output);
		input.SetSilenceFlags(dsp::SilenceFlags(test.mIsSilent ? ~0ull : 0ull));
		GetMixFunction(test.mInput, test.mOutput)(input, output);
		EXPECT_TRUE(output.IsSilent());
		EXPECT_EQ(output.GetChannel(0)[0], kStale);
	}

	// Sound that the mixdown leaves out folds to zeros, which are not flagged.
	dsp::AudioBuffer output(2, 8);
	for (AudioChannelLayout const& layout : {VX::kAudioChannelLayout_Mono, stereo})
	{
		dsp::AudioBuffer input(6, 8);
		FillStale(input);
		input.SetSilenceFlags(dsp::SilenceFlags(0b100111));
		FillStale(output);
		GetMixFunction(surround, layout)(input, output);
		EXPECT_FALSE(output.IsChannelSilent(0));
		EXPECT_EQ(output.GetChannel(layout.size() - 1)[0], 0.0f);
		EXPECT_EQ(input.GetChannel(0)[0], 0.0f) << "what is read under a flag is cleared";
		EXPECT_EQ(input.GetChannel(5)[0], kStale) << "and what is not read stays";
	}

	// A short input clears the flags of a longer output only after the rest became zeros.
	dsp::AudioBuffer shortInput(1, 3);
	std::fill_n(shortInput.GetChannel(0), 3, 0.5f);
	FillStale(output);
	output.Zero();
	GetMixFunction(VX::kAudioChannelLayout_Mono, stereo)(shortInput, output);
	EXPECT_EQ(output.GetChannel(1)[2], 0.5f);
	EXPECT_EQ(output.GetChannel(1)[3], 0.0f);
}

TEST(AudioChannelMix, GroupsNeedBothBuffersAndClearedFlagsAllChannels)
{
	MixFunction const mix = GetMixFunction(VX::kAudioChannelLayout_51, VX::kAudioChannelLayout_Mono);
	for (unsigned windows = 0; windows < 4; ++windows)
	{
		SCOPED_TRACE(windows);
		dsp::AudioBuffer input(6, 8);
		// One channel more than the mix writes.
		dsp::AudioBuffer output(2, 8);
		std::fill_n(input.GetChannel(0), 8, 1.0f);
		FillStale(output);
		output.Zero();
		dsp::AudioSubBuffer inWindow;
		dsp::AudioSubBuffer outWindow;
		inWindow.Init(6);
		outWindow.Init(2);
		inWindow.Assign(input, 0);
		outWindow.Assign(output, 0);
		dsp::AudioBuffer& from = windows & 1 ? static_cast<dsp::AudioBuffer&>(inWindow) : input;
		dsp::AudioBuffer& to = windows & 2 ? static_cast<dsp::AudioBuffer&>(outWindow) : output;
		mix(from, to);
		EXPECT_EQ(output.GetChannel(0)[7], (windows == 0 ? kInGroups : kFrameByFrame).mThird.mValue);
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
		dsp::AudioBuffer input(4, 13);
		dsp::AudioBuffer output(3, 13);
		FillStale(input);
		FillStale(output);
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
			Single sum = 0.0f;
			for (unsigned column = 0; column < 4; ++column)
			{
				sum = sum + Single(gains[row][column]) * samples[column];
			}
			EXPECT_EQ(output.IsChannelSilent(row) ? 0.0f : output.GetChannel(row)[12], sum.mValue) << row;
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

} // namespace
} // namespace SN::AudioChannelMix
