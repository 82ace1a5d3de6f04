#include "Sonaro/AudioUtilities.h"

#include "Support/Engine.h"

namespace SN::AudioUtilitiesTest
{

TEST(InterleaveBuffer, WritesTheSmallerOfBothSidesAndSilenceForFlaggedChannels)
{
	struct Case
	{
		char const* mName;
		unsigned mBufferChannels;
		unsigned mUseSize;
		unsigned long long mChannels;
		unsigned mSamples;
		unsigned long long mSilent;
		std::vector<float> mExpected;
	};
	// The sample of channel c at frame f is 10 (c + 1) + f; -1 is memory that is not written.
	Case const cases[] = {
		{"as it is", 2, 2, 2, 2, 0, {10, 20, 11, 21}},
		{"more channels asked for", 2, 2, 5, 2, 0, {10, 20, 11, 21, -1}},
		{"fewer channels asked for", 3, 2, 2, 2, 0, {10, 20, 11, 21, -1}},
		{"one channel asked for", 3, 2, 1, 2, 0, {10, 11, -1}},
		{"more samples asked for", 2, 1, 2, 9, 0, {10, 20, -1}},
		{"fewer samples asked for", 2, 3, 2, 1, 0, {10, 20, -1}},
		{"a flagged channel", 2, 2, 2, 2, 2, {10, 0, 11, 0}},
		{"all flagged", 2, 2, 2, 2, 3, {0, 0, 0, 0}},
		{"mono flagged", 1, 2, 1, 2, 1, {0, 0, -1}},
		{"nothing wanted", 2, 2, 2, 0, 0, {-1}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		dsp::AudioBuffer buffer(test.mBufferChannels, 4);
		buffer.SetUseSize(test.mUseSize);
		for (unsigned channel = 0; channel < test.mBufferChannels; ++channel)
		{
			for (unsigned frame = 0; frame < test.mUseSize; ++frame)
			{
				buffer.GetChannel(channel)[frame] = static_cast<float>(10 * (channel + 1) + frame);
			}
		}
		buffer.SetSilenceFlags(dsp::SilenceFlags(test.mSilent));
		std::vector<float> out(test.mExpected.size(), -1.0f);
		InterleaveBuffer(buffer, test.mChannels, test.mSamples, out.data());
		EXPECT_EQ(out, test.mExpected);
		InterleaveBuffer(buffer, test.mChannels, test.mSamples, nullptr);
	}
}

TEST(ConvertInt32ToFloat32InPlace, RoundsOnceFromDoublePrecision)
{
	std::vector<int> data = {std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), 0, 1, -1,
		0x40000000,
		// Between two floats: 2^30 + 64 is halfway and rounds to even, one more rounds up.
		0x40000000 + 64, 0x40000000 + 65, 123456789};
	std::vector<float> expected;
	for (int const value : data)
	{
		expected.push_back(static_cast<float>(static_cast<double>(value) / 2147483648.0));
	}
	ConvertInt32ToFloat32InPlace(data.data(), static_cast<unsigned>(data.size()));
	for (std::size_t i = 0; i < data.size(); ++i)
	{
		EXPECT_EQ(std::bit_cast<float>(data[i]), expected[i]) << "value " << i;
	}
	EXPECT_EQ(expected[0], 1.0f);
	EXPECT_EQ(expected[1], -1.0f);
	ConvertInt32ToFloat32InPlace(nullptr, 0);
}

TEST(SilenceBuffer, IsOneAlignedBlockOfZeros)
{
	float const* const silence = GetSilenceBufferPtr(0);
	EXPECT_EQ(GetSilenceBufferPtr(1000000), silence);
	EXPECT_EQ(reinterpret_cast<std::uintptr_t>(silence) % 32, 0u);
	EXPECT_EQ(
		std::vector<float>(silence, silence + GetMaxResampleBufferSize()), std::vector<float>(262144, 0.0f));
}

} // namespace SN::AudioUtilitiesTest
