#include "Sonaro/AudioResamplerFactory.h"
#include "Support/Engine.h"

namespace SN::SpecializedResamplerTest
{

using Signal = std::vector<float>;

FrameRate Rate(double inSamplesPerSecond)
{
	return FrameRate::FromSamplesPerSecond(inSamplesPerSecond);
}

// The two ratios as outputs for so many inputs.
struct RatioCase
{
	char const* mName;
	double mInputRate;
	long long mParts;
	long long mStep;
	// The samples after a block that a filter may look at.
	unsigned mAhead;
	std::vector<Signal> mPhases;

	InterfaceRef<IAudioResamplerSpecialized> Make(unsigned inChannels) const
	{
		return AudioResamplerFactory::CreateSpecializedResampler(Rate(mInputRate), Rate(48000), inChannels);
	}
};

Signal const kOnSample{2.3786186e-9f, -7.942459e-9f, 1.6327997e-8f, -2.4245537e-8f, 0.98899406f,
	-2.4245537e-8f, 1.6327997e-8f, -7.942459e-9f, 2.3786186e-9f};
Signal const kHalf{0.0023667177f, -0.015379166f, 0.054600246f, -0.1572644f, 0.6101129f, 0.6101129f,
	-0.1572644f, 0.054600246f, -0.015379166f, 0.0023667177f};
Signal const kThird{0.0030268815f, -0.01690132f, 0.056786474f, -0.16295487f, 0.8065488f, 0.38666168f,
	-0.11434115f, 0.039143216f, -0.010339182f, 0.001311488f};
RatioCase const kRatios[] = {
	{"1 to 2", 24000.0, 2, 1, 4, {kOnSample, kHalf}},
	{"2 to 3", 32000.0, 3, 2, 3, {kOnSample, kThird, Signal(kThird.rbegin(), kThird.rend())}},
};

// One channel by the definition: samples by their distance from the block's start.
class Reference
{
public:
	explicit Reference(RatioCase const& inCase)
		: mCase(inCase)
	{
		Reset(0);
	}

	void Reset(long long inPosition)
	{
		mPhase = mCase.mStep * inPosition % mCase.mParts + mCase.mParts;
		mHistory.assign(7, 0.0f);
	}
	void Silence()
	{
		mPhase = 0;
		mHistory.assign(7, 0.0f);
	}

	unsigned CountInput(unsigned inNumOutput) const
	{
		double const parts = static_cast<double>(mCase.mParts);
		return static_cast<unsigned>(
			std::floor(static_cast<double>(mCase.mStep) * (inNumOutput - 1.0) / parts +
					   static_cast<double>(mPhase) / parts + parts));
	}

	Signal Process(Signal const& inSamples, unsigned inNumInput, unsigned inNumOutput)
	{
		auto const at = [&](long long inIndex)
		{
			auto const place = static_cast<std::size_t>(inIndex < 0 ? -1 - inIndex : inIndex);
			Signal const& samples = inIndex < 0 ? mHistory : inSamples;
			return place < samples.size() ? samples[place] : 0.0f;
		};
		Signal outputs;
		for (unsigned i = 0; i < inNumOutput; ++i, mPhase += mCase.mStep)
		{
			// Ten samples more keep the remainder positive.
			long long const index = (mPhase + 10 * mCase.mParts) / mCase.mParts - 10;
			Signal const& filter = mCase.mPhases[static_cast<std::size_t>(mPhase - index * mCase.mParts)];
			float sum = filter[0] * at(index - 4);
			for (std::size_t tap = 1; tap < filter.size(); ++tap)
			{
				float const product = filter[tap] * at(index - 4 + static_cast<long long>(tap));
				sum = sum + product;
			}
			outputs.push_back(sum);
		}
		mPhase -= inNumInput * mCase.mParts;
		if (mPhase < 12)
		{
			Signal history;
			for (long long row = 0; row < 7; ++row)
			{
				history.push_back(at(static_cast<long long>(inNumInput) - 1 - row));
			}
			mHistory = history;
		}
		return outputs;
	}

	long long GetPhase() const { return mPhase; }

private:
	RatioCase const& mCase;
	long long mPhase = 0;
	Signal mHistory;
};

// The engine's resampler and a reference for each of two channels.
class Duel
{
public:
	explicit Duel(RatioCase const& inCase)
		: mCase(inCase),
		  mResampler(inCase.Make(kChannels)),
		  mReferences(kChannels, Reference(inCase))
	{
	}

	// As many inputs as are asked for, or less. Channel inSilent is silent, and all channels if it is kAll.
	void RunBlock(unsigned inNumOutput, unsigned inShort, unsigned inSilent)
	{
		unsigned numInput = mReferences[0].CountInput(inNumOutput);
		ASSERT_EQ(mResampler->GetInputSampleCount(inNumOutput), numInput);
		// Positions do not run away.
		numInput -= mReferences[0].GetPhase() < 30 ? std::min(numInput, inShort) : 0;
		dsp::AudioBuffer input(kChannels, numInput + Pick(mCase.mAhead + 1));
		dsp::AudioBuffer output = MakeStaleBuffer(kChannels, inNumOutput);
		std::vector<Signal> samples(kChannels, Signal(input.GetUseSize()));
		for (unsigned channel = 0; channel < kChannels; ++channel)
		{
			bool const isSilent = inSilent == channel || inSilent == kAll;
			std::generate_n(input.GetChannel(channel), input.GetUseSize(),
				[&] { return static_cast<float>(Pick(20001)) / 10000.0f - 1.0f; });
			input.SetChannelZero(channel, isSilent);
			samples[channel] = Heard(input, channel);
		}
		mResampler->Process(input, output, numInput, inNumOutput);
		for (unsigned channel = 0; channel < kChannels; ++channel)
		{
			bool const isSilent = inSilent == channel || inSilent == kAll;
			ASSERT_EQ(output.IsChannelSilent(channel), isSilent);
			if (inSilent == kAll)
			{
				mReferences[channel].Silence();
				continue;
			}
			Signal const expected = mReferences[channel].Process(samples[channel], numInput, inNumOutput);
			ASSERT_TRUE(isSilent || SameBits(Heard(output, channel), expected));
		}
	}

	void Reset(unsigned inPosition)
	{
		mResampler->Reset(inPosition);
		for (Reference& reference : mReferences)
		{
			reference.Reset(inPosition);
		}
	}

	// At random, 0 to inBelow - 1.
	unsigned Pick(unsigned inBelow) { return static_cast<unsigned>(mRandom() % inBelow); }

	static constexpr unsigned kAll = 7;

private:
	static constexpr unsigned kChannels = 2;

	RatioCase const& mCase;
	InterfaceRef<IAudioResamplerSpecialized> mResampler;
	std::vector<Reference> mReferences;
	std::mt19937 mRandom{71};
};

// Random blocks, as asked for or not, some shorter than the history, some with a silent channel, and some silent.
TEST(SpecializedResamplers, EqualTheirDefinitionToTheBit)
{
	for (RatioCase const& test : kRatios)
	{
		Duel duel(test);
		for (unsigned block = 0; block < 400; ++block)
		{
			SCOPED_TRACE(std::string(test.mName) + ", block " + std::to_string(block));
			unsigned const numOutput = 1 + duel.Pick(block % 4 == 0 ? 4 : 300);
			unsigned const silent = duel.Pick(Duel::kAll);
			duel.RunBlock(
				numOutput, block % 5 == 1 ? duel.Pick(6) : 0, block % 50 == 49 ? Duel::kAll : silent);
			ASSERT_FALSE(testing::Test::HasFatalFailure());
			if (block % 60 == 30)
			{
				duel.Reset(duel.Pick(100));
			}
		}
	}
}

// Blocks as their contract wants them, each with the samples ahead, give the same outputs however they are cut.
TEST(SpecializedResamplers, AnyCutGivesTheSameOutputs)
{
	std::mt19937 random(72);
	for (RatioCase const& test : kRatios)
	{
		SCOPED_TRACE(test.mName);
		constexpr unsigned kOutputs = 3000;
		Signal samples(kOutputs + 50);
		std::generate(
			samples.begin(), samples.end(), [&] { return static_cast<float>(random() % 1000) / 1000.0f; });
		std::vector<Signal> results;
		for (unsigned const largest : {kOutputs, 700u, 9u})
		{
			auto const resampler = test.Make(1);
			Signal result;
			std::size_t cursor = 0;
			while (result.size() < kOutputs)
			{
				unsigned const count = std::min(kOutputs - static_cast<unsigned>(result.size()),
					largest == kOutputs ? kOutputs : 1 + static_cast<unsigned>(random() % largest));
				unsigned const numInput = resampler->GetInputSampleCount(count);
				dsp::AudioBuffer input(1, numInput + test.mAhead);
				dsp::AudioBuffer output(1, count);
				std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(cursor), input.GetUseSize(),
					input.GetChannel(0));
				resampler->Process(input, output, numInput, count);
				Signal const block = Heard(output);
				result.insert(result.end(), block.begin(), block.end());
				cursor += numInput;
			}
			results.push_back(result);
		}
		EXPECT_TRUE(SameBits(results[0], results[1]));
		EXPECT_TRUE(SameBits(results[0], results[2]));
	}
}

// A tone keeps its place and its level, and the mean level is a little below 1 in every phase.
TEST(SpecializedResamplers, TonesKeepPlaceAndLevel)
{
	for (RatioCase const& test : kRatios)
	{
		SCOPED_TRACE(test.mName);
		for (double const frequency : {0.0, 0.01, 0.1})
		{
			auto const resampler = test.Make(1);
			dsp::AudioBuffer input(1, 2000);
			dsp::AudioBuffer output(1, 1500);
			auto const wave = [&](double inPosition)
			{ return std::cos(2.0 * std::numbers::pi * frequency * inPosition); };
			for (unsigned i = 0; i < 2000; ++i)
			{
				input.GetChannel(0)[i] = static_cast<float>(wave(i));
			}
			resampler->Process(input, output, 1900, 1500);
			for (unsigned i = 20; i < 1400; ++i)
			{
				double const position =
					1.0 + i * static_cast<double>(test.mStep) / static_cast<double>(test.mParts);
				double const tolerance = frequency == 0.0 ? 0.00007 : frequency < 0.1 ? 0.0005 : 0.02;
				ASSERT_NEAR(static_cast<double>(output.GetChannel(0)[i]), 0.98893 * wave(position), tolerance)
					<< i;
			}
		}
	}
}

TEST(SpecializedResamplers, AreThereForTwoRatiosOnly)
{
	struct Case
	{
		double mInputRate;
		double mOutputRate;
		// The latencies; 0 where there is no such resampler.
		unsigned mOutputLatency;
		unsigned mInputLatency;
	};
	constexpr Case kCases[] = {
		{24000.0, 48000.0, 20, 10},
		{44100.0, 88200.0, 20, 10},
		{32000.0, 48000.0, 15, 10},
		{44100.0, 48000.0, 0, 0},
		{48000.0, 48000.0, 0, 0},
		{96000.0, 48000.0, 0, 0},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(std::to_string(test.mInputRate) + " to " + std::to_string(test.mOutputRate));
		auto const resampler = AudioResamplerFactory::CreateSpecializedResampler(
			Rate(test.mInputRate), Rate(test.mOutputRate), 1);
		ASSERT_EQ(resampler.IsValid(), test.mOutputLatency != 0);
		EXPECT_EQ(AudioResamplerFactory::IsSpecializedResamplerAvailable(
					  Rate(test.mInputRate), Rate(test.mOutputRate)),
			resampler.IsValid());
		if (resampler)
		{
			EXPECT_EQ(resampler->GetOutputLatency(), test.mOutputLatency);
			EXPECT_EQ(resampler->GetInputLatency(), test.mInputLatency);
			EXPECT_EQ(resampler->GetSelfReference(), resampler);
		}
	}
	EXPECT_FALSE(AudioResamplerFactory::IsSpecializedResamplerAvailable(FrameRate(), FrameRate()));
}

} // namespace SN::SpecializedResamplerTest
