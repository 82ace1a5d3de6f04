#include "zorvaccelerate/ChannelMixing.h"

#include "GuardedArray.h"
#include "Support/Common.h"
#include "zorvaccelerate/ChannelVariants.h"

namespace zorvaccelerate::utility::ChannelMixingTest
{

constexpr unsigned kLargestCount = 67;
constexpr FoldGains kGains{.mA = 0.333333f, .mB = 0.71f, .mC = -1.3f, .mTotal = 0.85714f};

// A sum of up to this many inputs takes every path of the kernel.
constexpr unsigned kInputs = 9;
using Inputs = std::array<std::vector<float>, kInputs>;

// What sample i of an output should be, each step rounded apart.
using Expected = float (*)(Inputs const& inInputs, std::size_t inOutput, std::size_t i);

float Sum3(float inA, float inB, float inC)
{
	return Rounded(Rounded(inA + inB) + inC);
}

float Front(Inputs const& in, std::size_t i)
{
	return Rounded(kGains.mA * Sum3(in[0][i], in[1][i], in[2][i]));
}

float Total(float inA, float inB)
{
	return Rounded(kGains.mTotal * Rounded(inA + inB));
}

float Side(Inputs const& in, std::size_t inOutput, std::size_t i)
{
	return Rounded(Rounded(kGains.mA * in[inOutput][i]) + Rounded(kGains.mB * in[2][i]));
}

struct Fold
{
	ChannelFold mFold;
	unsigned mOutputs;
	Expected mExpected;
};

constexpr Fold kFolds[] = {
	{ChannelFold::kFrontToMono, 1, [](auto& in, std::size_t, std::size_t i) { return Front(in, i); }},
	{ChannelFold::kFrontRearToMono, 1,
		[](auto& in, std::size_t, std::size_t i)
		{ return Total(Front(in, i), Rounded(kGains.mB * Rounded(in[4][i] + in[5][i]))); }},
	{ChannelFold::kFrontLFEToMono, 1,
		[](auto& in, std::size_t, std::size_t i)
		{ return Total(Front(in, i), Rounded(kGains.mB * in[3][i])); }},
	{ChannelFold::kFrontRearLFEToMono, 1,
		[](auto& in, std::size_t, std::size_t i)
		{ return Total(Rounded(kGains.mB * Sum3(in[4][i], in[5][i], in[3][i])), Front(in, i)); }},
	{ChannelFold::kFrontToStereo, 2,
		[](auto& in, std::size_t side, std::size_t i) { return Rounded(kGains.mTotal * Side(in, side, i)); }},
	{ChannelFold::kFrontRearToStereo, 2,
		[](auto& in, std::size_t side, std::size_t i)
		{ return Total(Side(in, side, i), Rounded(kGains.mC * in[4 + side][i])); }},
	{ChannelFold::kFrontLFEToStereo, 2,
		[](auto& in, std::size_t side, std::size_t i)
		{ return Total(Side(in, side, i), Rounded(kGains.mC * in[3][i])); }},
	{ChannelFold::kFrontRearLFEToStereo, 2,
		[](auto& in, std::size_t side, std::size_t i)
		{ return Total(Side(in, side, i), Rounded(kGains.mC * Rounded(in[4 + side][i] + in[3][i]))); }},
	{ChannelFold::kStereoToMono, 1,
		[](auto& in, std::size_t, std::size_t i) { return Total(in[0][i], in[1][i]); }},
};

// Awkward samples at all kinds of addresses, and outputs between guards.
class Trial
{
public:
	Trial(unsigned inCount, unsigned inOffset, std::mt19937& ioRandom)
	{
		for (unsigned k = 0; k < kInputs; ++k)
		{
			mArrays.emplace_back(inCount, (inOffset + k) % 8, ioRandom);
			mInputs[k] = mArrays.back().Data();
			mValues[k] = mArrays.back().Values();
		}
		for (unsigned k = 0; k < 2; ++k)
		{
			mOut.emplace_back(inCount, (inOffset + 3 * k) % 8, ioRandom);
			mOutputs[k] = mOut.back().Data();
		}
	}

	bool Holds(std::size_t inOutput, std::vector<float> const& inExpected)
	{
		return SameBits(mOut[inOutput].Values(), inExpected) && mOut[0].GuardsAreWhole() &&
			   mOut[1].GuardsAreWhole();
	}

	std::deque<GuardedArray> mArrays;
	std::deque<GuardedArray> mOut;
	float const* mInputs[kInputs] = {};
	float* mOutputs[2] = {};
	Inputs mValues;
};

TEST(ChannelMixing, EveryVariantFoldsToTheBitsOfThePlainSum)
{
	std::mt19937 random(21);
	for (Fold const& fold : kFolds)
	{
		for (unsigned count = 0; count <= kLargestCount; ++count)
		{
			for (ChannelVariant const& variant : RunnableChannelVariants())
			{
				Trial trial(count, count % 8, random);
				variant.mFolds[static_cast<unsigned>(fold.mFold)](
					count, trial.mInputs, kGains, trial.mOutputs);
				for (std::size_t output = 0; output < fold.mOutputs; ++output)
				{
					std::vector<float> expected(count);
					for (std::size_t i = 0; i < count; ++i)
					{
						expected[i] = fold.mExpected(trial.mValues, output, i);
					}
					ASSERT_TRUE(trial.Holds(output, expected))
						<< "fold " << static_cast<unsigned>(fold.mFold) << ", " << variant.mName << ", "
						<< count << " samples, output " << output;
				}
			}
		}
	}
}

TEST(ChannelMixing, EveryVariantSumsInTheOrderOfTheInputs)
{
	constexpr float kSumGains[kInputs] = {0.3f, -1.0f, 0.7f, 1e-20f, 1.0f, 2.5f, -0.1f, 0.9f, 3.0f};
	std::mt19937 random(22);
	for (unsigned inputs = 1; inputs <= kInputs; ++inputs)
	{
		for (unsigned count = 0; count <= kLargestCount; count += 1 + count % 5)
		{
			for (ChannelVariant const& variant : RunnableChannelVariants())
			{
				SCOPED_TRACE(
					std::to_string(inputs) + " inputs, " + variant.mName + ", " + std::to_string(count));
				Trial trial(count, inputs, random);
				std::vector<float> sum(count);
				std::vector<float> added = trial.mOut[1].Values();
				for (std::size_t i = 0; i < count; ++i)
				{
					sum[i] = Rounded(kSumGains[0] * trial.mValues[0][i]);
					for (unsigned k = 1; k < inputs; ++k)
					{
						sum[i] = Rounded(sum[i] + Rounded(kSumGains[k] * trial.mValues[k][i]));
					}
					added[i] = Rounded(added[i] + Rounded(kSumGains[2] * trial.mValues[0][i]));
				}
				variant.mWeightedSum(count, inputs, trial.mInputs, kSumGains, trial.mOutputs[0]);
				variant.mMulConstantAdd(count, trial.mInputs[0], kSumGains[2], trial.mOutputs[1]);
				ASSERT_TRUE(trial.Holds(0, sum));
				ASSERT_TRUE(trial.Holds(1, added));
			}
		}
	}
	float silence[3] = {1.0f, 2.0f, 3.0f};
	WeightedSum(3, 0, nullptr, nullptr, silence);
	EXPECT_EQ(silence[2], 0.0f);
}

// What a filter hears of one input or of two, from sample inFirst on.
FilterFeed FeedFrom(Trial const& inTrial, bool inIsPair, unsigned inFirst)
{
	FilterFeed feed{.mFirst = inTrial.mInputs[0] + inFirst, .mFirstGain = 0.6f, .mSecondGain = 0.8f};
	feed.mSecond = inIsPair ? inTrial.mInputs[1] + inFirst : nullptr;
	return feed;
}

constexpr float kFeedFactor = 0.0625f;
// The two samples before the first.
constexpr float kX1 = 0.25f;
constexpr float kX2 = -0.5f;

std::vector<float> FeedPlainly(Trial const& inTrial, bool inIsPair)
{
	std::vector<float> expected;
	float x1 = kX1;
	float x2 = kX2;
	for (std::size_t i = 0; i < inTrial.mValues[0].size(); ++i)
	{
		float const first = inTrial.mValues[0][i];
		float const x0 =
			inIsPair ? Rounded(Rounded(first * 0.6f) + Rounded(inTrial.mValues[1][i] * 0.8f)) : first;
		expected.push_back(Rounded(Sum3(Rounded(2.0f * x1), x0, x2) * kFeedFactor));
		x2 = x1;
		x1 = x0;
	}
	return expected;
}

// However the feed is cut, and whatever variant runs, it is that of the whole.
TEST(ChannelMixing, AnyCutOfAFilterFeedEqualsTheWhole)
{
	constexpr unsigned kCount = 203;
	std::mt19937 random(23);
	Trial trial(kCount, 0, random);
	for (bool const isPair : {false, true})
	{
		SCOPED_TRACE(isPair ? "two channels" : "one channel");
		std::vector<float> const expected = FeedPlainly(trial, isPair);
		for (unsigned const longest : {kCount, 1u, 2u, 3u, 40u})
		{
			float x1 = kX1;
			float x2 = kX2;
			for (unsigned done = 0; done < kCount;)
			{
				unsigned const count =
					std::min<unsigned>(1 + static_cast<unsigned>(random()) % longest, kCount - done);
				FilterFeed feed = FeedFrom(trial, isPair, done);
				feed.mX1 = x1;
				feed.mX2 = x2;
				FeedFilter(count, feed, kFeedFactor, trial.mOutputs[0] + done);
				x1 = feed.mX1;
				x2 = feed.mX2;
				done += count;
			}
			EXPECT_TRUE(trial.Holds(0, expected)) << "up to " << longest;
		}
		for (ChannelVariant const& variant : RunnableChannelVariants())
		{
			isPair ? variant.mFeedTwo(kCount, FeedFrom(trial, true, 0), kFeedFactor, trial.mOutputs[1])
				   : variant.mFeedOne(kCount, trial.mInputs[0], kFeedFactor, trial.mOutputs[1]);
			// From the third sample on.
			std::copy_n(expected.begin(), 2, trial.mOutputs[1]);
			EXPECT_TRUE(trial.Holds(1, expected)) << variant.mName;
		}
	}
}

} // namespace zorvaccelerate::utility::ChannelMixingTest
