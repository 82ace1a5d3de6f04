#include "zorvcore/utility/Hash.h"

#include "Support/Common.h"

namespace zorvcore::utility
{

void PrintTo(Guid const& inGuid, std::ostream* outStream)
{
	*outStream << std::hex << inGuid.mHigh << ' ' << inGuid.mLow << std::dec;
}

namespace
{

// The byte sequence of the known values.
std::vector<std::uint8_t> MakeBytes(std::size_t inSize)
{
	std::vector<std::uint8_t> bytes(inSize);
	for (std::size_t i = 0; i < inSize; ++i)
	{
		bytes[i] = static_cast<std::uint8_t>(i * 7 + 3);
	}
	return bytes;
}

Guid Digest(HashValueMixerState const& inState)
{
	Guid digest;
	GetHashResult(inState, digest);
	return digest;
}

Guid DigestWhole(std::vector<std::uint8_t> const& inBytes)
{
	HashValueMixerState state;
	UpdateHashState(state, inBytes.data(), inBytes.size());
	return Digest(state);
}

// The values of the algorithm as defined, for each of its ways of treating short and long inputs.
TEST(Hash, KnownValues)
{
	struct Case
	{
		std::size_t mSize;
		Guid mExpected;
	};
	constexpr Case kCases[] = {
		{0, {0x99aa06d3014798d8ull, 0x6001c324468d497full}},
		{1, {0x22bbb76b211a39baull, 0x13e608bc156defedull}},
		{8, {0xe3bc8a5f46171555ull, 0x3cd024e3d63a1588ull}},
		{16, {0xce0b9647ab24f884ull, 0x60d75c5e47d40a24ull}},
		{37, {0x62b7375e0917a74cull, 0xf5b91a49b83cbc06ull}},
		{128, {0x1b1962a096bac78bull, 0xc580008b6c92ac53ull}},
		{200, {0x32200a52a918beafull, 0x380142cdd5843bbdull}},
		{241, {0xac6c3492c3d6b45dull, 0x8beadd3a8874fe17ull}},
		{1024, {0x18bc0eaca9a33636ull, 0x9b81661c641c72b1ull}},
		{1025, {0xbf447251cfa98d7cull, 0x806c2072ed713576ull}},
		{5000, {0xc98ae385d09887ccull, 0x799aaddd7339581dull}},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mSize);
		EXPECT_EQ(DigestWhole(MakeBytes(test.mSize)), test.mExpected);
	}
}

TEST(Hash, AnySplitEqualsWhole)
{
	constexpr unsigned kSeed = 20240607;
	std::minstd_rand random(kSeed);
	// Around the sizes where the algorithm changes its ways, and well beyond its inner buffers.
	for (std::size_t const size : {1u, 16u, 17u, 128u, 129u, 240u, 241u, 256u, 257u, 1024u, 1025u, 5000u})
	{
		std::vector<std::uint8_t> const bytes = MakeBytes(size);
		Guid const whole = DigestWhole(bytes);
		for (int trial = 0; trial < 30; ++trial)
		{
			HashValueMixerState state;
			for (std::size_t done = 0; done < size;)
			{
				std::size_t const count = std::min<std::size_t>(random() % (size / 3 + 2), size - done);
				UpdateHashState(state, bytes.data() + done, count);
				done += count;
			}
			EXPECT_EQ(Digest(state), whole) << "size " << size << ", trial " << trial;
		}
	}
}

} // namespace
} // namespace zorvcore::utility
