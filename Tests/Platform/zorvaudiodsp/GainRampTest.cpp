#include "zorvaudiodsp/GainRamp.h"

#include "Support/Buffers.h"
#include "Support/Common.h"
#include "zorvaudiodsp/AudioDelayBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

namespace dsp::GainRampTest
{

using SN::Testing::Heard;
using SN::Testing::MakeBuffer;
using SN::Testing::WindowOf;

constexpr float kRate = 48000.0f;

// The gain of sample k of a ramp, each step rounded to single precision in the order of the formula.
float ExpectedGain(float inStart, float inTarget, unsigned inK, unsigned inN)
{
	if (inK >= inN)
	{
		return inTarget;
	}
	float const difference = inTarget - inStart;
	float const rise = difference * static_cast<float>(inK);
	float const part = rise / static_cast<float>(inN);
	return inStart + part;
}

// The gains of inCount samples, applied in blocks as inNextBlock says.
template <class NextBlock>
std::vector<float> Gains(GainRamp inRamp, unsigned inCount, NextBlock const& inNextBlock)
{
	std::vector<float> gains;
	while (gains.size() < inCount)
	{
		auto const count = std::min(inNextBlock(), inCount - static_cast<unsigned>(gains.size()));
		AudioBuffer block = MakeBuffer(1, count, 1.0f);
		inRamp.Process(block);
		auto const heard = Heard(block);
		gains.insert(gains.end(), heard.begin(), heard.end());
	}
	return gains;
}

TEST(GainRamp, FollowsTheLineWhateverTheBlocks)
{
	struct Case
	{
		float mStart;
		float mTarget;
		float mSeconds;
		unsigned mLength;
	};
	Case const cases[] = {{0.0f, 1.0f, 0.005f, 240}, {1.0f, 0.0f, 0.005f, 240}, {0.3f, 1.7f, 0.015f, 720},
		{0.1f, -0.2f, 0.01f, 480}, {1.0f, 0.5f, 0.0f, 1}, {1.0f, 0.5f, 0.00003f, 1}};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(testing::Message() << test.mStart << " to " << test.mTarget << " in " << test.mSeconds);
		GainRamp ramp(kRate, test.mStart, test.mSeconds);
		ramp.SetTargetGain(test.mTarget);
		std::vector<float> expected;
		for (unsigned k = 0; k < 800; ++k)
		{
			expected.push_back(ExpectedGain(test.mStart, test.mTarget, k, test.mLength));
		}
		std::mt19937 random(3);
		EXPECT_EQ(Gains(ramp, 800, [] { return 800u; }), expected);
		EXPECT_EQ(Gains(ramp, 800, [] { return 1u; }), expected);
		EXPECT_EQ(Gains(ramp, 800, [&] { return 1 + static_cast<unsigned>(random() % 100); }), expected);
	}
}

TEST(GainRamp, ANewTargetStartsAgainFromTheGainReached)
{
	GainRamp ramp(zorvmediatypes::FrameRate(5292000), 0.0f, 0.005f);
	ramp.SetTargetGain(1.0f);
	ramp.AdvanceWithoutProcessing(100);
	ramp.SetTargetGain(1.0f);
	EXPECT_EQ(ramp.GetCurrentGain(), ExpectedGain(0.0f, 1.0f, 100, 240)) << "the same target changes nothing";
	float const reached = ramp.GetCurrentGain();
	ramp.SetTargetGain(0.25f);
	EXPECT_EQ(ramp.GetCurrentGain(), reached);
	ramp.AdvanceWithoutProcessing(239);
	EXPECT_EQ(ramp.GetCurrentGain(), ExpectedGain(reached, 0.25f, 239, 240));
	EXPECT_FALSE(ramp.IsAtRest());
	ramp.AdvanceWithoutProcessing(std::numeric_limits<unsigned long long>::max() / 2);
	EXPECT_EQ(ramp.GetCurrentGain(), 0.25f);
	EXPECT_TRUE(ramp.IsAtRest());
}

TEST(GainRamp, SilenceIsSkippedWhileTimePasses)
{
	GainRamp ramp(kRate, 0.0f, 0.005f);
	ramp.SetTargetGain(1.0f);
	AudioBuffer block(2, 100);
	std::fill_n(block.GetChannel(1), 100, 2.0f);
	block.MarkChannelSilent(0);
	ramp.Process(block);
	EXPECT_TRUE(block.IsChannelSilent(0));
	EXPECT_EQ(block.GetChannel(1)[99], 2.0f * ExpectedGain(0.0f, 1.0f, 99, 240));
	EXPECT_EQ(ramp.GetCurrentGain(), ExpectedGain(0.0f, 1.0f, 100, 240));
	block.Zero();
	ramp.Process(block);
	EXPECT_TRUE(block.IsSilent());
	EXPECT_EQ(ramp.GetCurrentGain(), ExpectedGain(0.0f, 1.0f, 200, 240));
	// The forms for one channel pass time as well, once each.
	ramp.Process(block, 0);
	EXPECT_EQ(ramp.GetCurrentGain(), 1.0f);
}

TEST(GainRamp, AtRestOneTouchesNothingAndZeroSilences)
{
	float const odd[] = {
		-0.0f, std::numeric_limits<float>::denorm_min(), 1.1f, std::numeric_limits<float>::infinity()};
	AudioBuffer input(1, 4);
	AudioBuffer output(1, 4);
	std::copy_n(odd, 4, input.GetChannel(0));
	GainRamp one(kRate, 1.0f, 0.005f);
	one.Process(input, 0, output, 0);
	EXPECT_EQ(std::memcmp(output.GetChannel(0), odd, sizeof(odd)), 0);
	one.Process(input);
	EXPECT_EQ(std::memcmp(input.GetChannel(0), odd, sizeof(odd)), 0);

	GainRamp zero(kRate, 0.0f, 0.005f);
	EXPECT_TRUE(zero.HasConstantGainZero());
	zero.Process(input);
	EXPECT_TRUE(input.IsSilent());
	EXPECT_EQ(input.GetChannel(0)[3], 0.0f) << "zeros, also for who reads past the flag";
	zero.SetTargetGain(1.0f);
	EXPECT_FALSE(zero.HasConstantGainZero());
	one.SetTargetGain(0.0f);
	EXPECT_FALSE(one.HasConstantGainZero()) << "not at rest yet";

	// Only the samples that both sides have.
	AudioBuffer longer = MakeBuffer(1, 6, 5.0f);
	GainRamp(kRate, 0.0f, 0.005f).Process(output, 0, longer, 0);
	EXPECT_EQ(Heard(longer), std::vector<float>({0, 0, 0, 0, 5, 5}));
}

TEST(GainRamp, OverAWindowNothingOutsideIsTouched)
{
	AudioBuffer parent = MakeBuffer(1, 8, 1.0f);
	auto const window = WindowOf(parent, 2, 3);
	GainRamp(kRate, 0.5f, 0.005f).Process(*window);
	EXPECT_EQ(Heard(parent), std::vector<float>({1, 1, 0.5f, 0.5f, 0.5f, 1, 1, 1}));
	GainRamp(kRate, 0.0f, 0.005f).Process(*window);
	EXPECT_EQ(Heard(parent), std::vector<float>({1, 1, 0, 0, 0, 1, 1, 1}));
}

TEST(AudioDelayBuffer, AnySplitGivesTheInputLaterAndSilenceBefore)
{
	constexpr unsigned kFrames = 1000;
	constexpr unsigned kLargest = 64;
	std::mt19937 random(5);
	for (unsigned const delay : {0u, 1u, 37u, 64u, 311u, 2000u})
	{
		for (unsigned const largestBlock : {1u, 7u, kLargest})
		{
			SCOPED_TRACE(testing::Message() << "delay " << delay << ", blocks up to " << largestBlock);
			AudioDelayBuffer line;
			line.Init(2, delay, kLargest);
			// Channel 0 falls silent for some blocks; channel 2 is more than the line has.
			std::vector<float> written;
			for (unsigned done = 0; done < kFrames;)
			{
				unsigned const count =
					std::min(1 + static_cast<unsigned>(random() % largestBlock), kFrames - done);
				AudioBuffer block(3, count);
				bool const silent = random() % 4 == 0;
				for (unsigned i = 0; i < count; ++i)
				{
					block.GetChannel(0)[i] = static_cast<float>(done + i + 1);
					block.GetChannel(1)[i] = -1.0f;
					written.push_back(silent ? 0.0f : static_cast<float>(done + i + 1));
				}
				block.SetChannelZero(0, silent);
				line.Write(block);
				line.Read(block);
				auto const heard = Heard(block);
				for (unsigned i = 0; i < count; ++i)
				{
					float const expected = done + i < delay ? 0.0f : written[done + i - delay];
					ASSERT_EQ(heard[i], expected) << "frame " << done + i;
				}
				ASSERT_TRUE(block.IsChannelSilent(2));
				done += count;
			}
		}
	}
}

TEST(AudioDelayBuffer, ResetForgetsHistoryAndSilenceComesOutFlagged)
{
	AudioDelayBuffer line;
	line.Init(1, 4, 8);
	AudioBuffer block = MakeBuffer(1, 8, 3.0f);
	line.Write(block);
	line.Reset();
	block.Zero();
	line.Write(block);
	line.Read(block);
	EXPECT_TRUE(block.IsSilent());

	std::fill_n(block.GetChannel(0), 8, 3.0f);
	block.NoteChannelWrite(0, 8);
	line.Write(block);
	std::vector<bool> silent;
	for (int i = 0; i < 3; ++i)
	{
		line.Read(block);
		silent.push_back(block.IsSilent());
		block.Zero();
		line.Write(block);
	}
	EXPECT_EQ(silent, std::vector<bool>({false, false, true}));
}

TEST(AudioDelayBuffer, RefusesEndlessDelaysAndSparesAbsentChannels)
{
	AudioDelayBuffer delay;
	for (unsigned const samples : {(1u << 31) - 64, 1u << 31, ~0u})
	{
		EXPECT_THROW(delay.Init(0, samples, 64), std::length_error) << samples;
	}
	delay.Init(2, 2, 4);
	AudioBuffer block(2, 4);
	std::fill_n(block.GetChannel(0), 4, 1.0f);
	delay.Write(block);
	AudioBuffer parent(1, 4);
	delay.Read(*WindowOf(parent, 0, 4, 2));
	EXPECT_EQ(parent.GetChannel(0)[1], 0.0f);
	EXPECT_EQ(parent.GetChannel(0)[2], 1.0f);
}

TEST(AudioDelayBuffer, ABlockBeyondTheLargestIsCutShortNotOverrun)
{
	AudioDelayBuffer line;
	line.Init(1, 2, 4);
	AudioBuffer block = MakeBuffer(1, 10, 3.0f);
	line.Write(block);
	line.Read(block);
	EXPECT_EQ(Heard(block), std::vector<float>({0, 0, 3, 3, 0, 0, 0, 0, 0, 0}));
}

} // namespace dsp::GainRampTest
