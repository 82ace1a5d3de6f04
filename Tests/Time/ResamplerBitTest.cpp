#include "ReferenceResamplers.h"
#include "ResamplerRuns.h"
#include "Support/Engine.h"

namespace SN::ResamplerBitTest
{

constexpr unsigned kChannels = 3;

// The engine's resampler and a reference for each channel, fed with the same noise block by block.
class Duel
{
public:
	Duel(ResamplerKind inKind, RatePair const& inRates, unsigned inSeed)
		: mResampler(MakeResampler(inKind, inRates, kChannels)),
		  mRandom(inSeed)
	{
		for (unsigned channel = 0; channel < kChannels; ++channel)
		{
			mReferences.push_back(MakeReference(inKind, inRates.GetRatio()));
		}
	}

	void RunAskedBlock(unsigned inNumOutput)
	{
		unsigned const numInput = mResampler->GetInputSampleCount(inNumOutput);
		for (auto const& reference : mReferences)
		{
			ASSERT_EQ(numInput, reference->CountInput(inNumOutput)) << "for " << inNumOutput << " outputs";
		}
		RunBlock(numInput, inNumOutput);
	}

	// Now and then a channel is silent, and now and then the input's memory goes on beyond its end.
	void RunBlock(unsigned inNumInput, unsigned inNumOutput)
	{
		unsigned const silentChannel = Pick(8);
		dsp::AudioBuffer input(kChannels, inNumInput + Pick(2) * Pick(5));
		dsp::AudioBuffer output = MakeStaleBuffer(kChannels, inNumOutput);
		std::vector<Signal> samples(kChannels, Signal(input.GetCapacity()));
		for (unsigned channel = 0; channel < kChannels; ++channel)
		{
			std::generate(samples[channel].begin(), samples[channel].end(), [&] { return Noise(); });
			std::copy(samples[channel].begin(), samples[channel].end(), input.GetChannel(channel));
		}
		if (silentChannel < kChannels)
		{
			input.MarkChannelSilent(silentChannel);
			std::fill(samples[silentChannel].begin(), samples[silentChannel].end(), 0.0f);
		}
		input.SetUseSize(inNumInput);
		mResampler->Process(input, output, inNumInput, inNumOutput);
		for (unsigned channel = 0; channel < kChannels; ++channel)
		{
			Signal const expected = mReferences[channel]->Process(samples[channel], inNumInput, inNumOutput);
			for (unsigned i = 0; i < inNumOutput && !output.IsChannelSilent(channel); ++i)
			{
				ASSERT_TRUE(SameBits(output.GetChannel(channel)[i], expected[i]))
					<< "block " << mNumBlocks << ", channel " << channel << ", output " << i << " of "
					<< inNumOutput << ": " << output.GetChannel(channel)[i] << " and " << expected[i];
			}
			mNumCompared += output.IsChannelSilent(channel) ? 0 : inNumOutput;
		}
		++mNumBlocks;
	}

	// At random, 0 to inBelow - 1.
	unsigned Pick(unsigned inBelow) { return static_cast<unsigned>(mRandom() % inBelow); }
	unsigned GetNumCompared() const { return mNumCompared; }

private:
	float Noise() { return std::ldexp(static_cast<float>(Pick(2000001)) - 1000000.0f, -20); }

	InterfaceRef<IAudioResampler> mResampler;
	std::vector<std::unique_ptr<ReferenceResampler>> mReferences;
	std::mt19937 mRandom;
	unsigned mNumBlocks = 0;
	unsigned mNumCompared = 0;
};

struct RatioCase
{
	char const* mName;
	RatePair mRates;
	// The largest block of outputs.
	unsigned mLargest;
	// The long filter at 100 has 24 million coefficients.
	bool mTriesHighQuality;
};
RatioCase const kRatios[] = {
	{"0.04", RatePair(0.04), 900, true},
	{"0.5", RatePair(0.5), 700, true},
	{"44100 to 48000", RatePair(44100, 48000), 700, true},
	{"1", RatePair(48000, 48000), 700, true},
	{"48000 to 44100", RatePair(48000, 44100), 700, true},
	{"2", RatePair(96000, 48000), 500, true},
	{"3.7", RatePair(3.7), 300, true},
	{"100", RatePair(100.0), 50, false},
};

TEST(Resamplers, AnyCutEqualsTheReferenceToTheBit)
{
	for (RatioCase const& test : kRatios)
	{
		for (ResamplerKind const kind : kAllResamplers)
		{
			if (kind == ResamplerKind::kSincHighQuality && !test.mTriesHighQuality)
			{
				continue;
			}
			SCOPED_TRACE(std::string(GetName(kind)) + ", " + test.mName);
			Duel duel(kind, test.mRates, 61);
			for (unsigned block = 0; block < 40; ++block)
			{
				// From 1 on: for none the linear resampler asks for nearly 2^32 samples.
				unsigned const largest = block % 3 == 0 ? 5 : test.mLargest;
				duel.RunAskedBlock(1 + duel.Pick(largest));
				if (testing::Test::HasFatalFailure())
				{
					return;
				}
			}
			EXPECT_GT(duel.GetNumCompared(), 500u);
		}
	}
}

// Short blocks in all relations of input and output, so that the position falls into each row of the
// history and beyond the input.
TEST(Resamplers, BlocksThatWereNotAskedForEqualTheReference)
{
	for (RatioCase const& test : kRatios)
	{
		for (ResamplerKind const kind : {ResamplerKind::kLinear, ResamplerKind::kCubic})
		{
			SCOPED_TRACE(std::string(GetName(kind)) + ", " + test.mName);
			Duel duel(kind, test.mRates, 62);
			double owed = 0.0;
			for (unsigned block = 0; block < 400; ++block)
			{
				unsigned const numOutput = duel.Pick(8);
				owed += numOutput * test.mRates.GetRatio();
				unsigned const numInput = static_cast<unsigned>(std::max(owed + duel.Pick(7) - 3.0, 0.0));
				owed -= numInput;
				duel.RunBlock(numInput, numOutput);
				if (testing::Test::HasFatalFailure())
				{
					return;
				}
			}
		}
	}
}

// More and less input than was asked for: the surplus waits, and what is missing reads as zeros.
TEST(Resamplers, SincKeepsItsSurplusToTheBit)
{
	for (RatioCase const& test : kRatios)
	{
		SCOPED_TRACE(test.mName);
		Duel duel(ResamplerKind::kSinc, test.mRates, 63);
		for (unsigned block = 0; block < 30; ++block)
		{
			unsigned const numInput = 128 * (duel.Pick(4)) + (block == 0 ? 256 : 0);
			double const share = numInput / test.mRates.GetRatio() + 1.0;
			duel.RunBlock(numInput, static_cast<unsigned>(share * (duel.Pick(200)) / 100.0));
			if (testing::Test::HasFatalFailure())
			{
				return;
			}
		}
	}
}

} // namespace SN::ResamplerBitTest
