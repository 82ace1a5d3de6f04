#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace SonaroDigest
{

// A number of 64 bits that stands for all numbers that were added, in their order and to the bit, but for what is not a
// number: processors disagree on its bits.
class Digest
{
public:
	void Add(float inValue)
	{
		AddBits(inValue == inValue ? std::bit_cast<std::uint32_t>(inValue) : 0x7FC00000u);
	}
	void Add(double inValue)
	{
		AddBits(inValue == inValue ? std::bit_cast<std::uint64_t>(inValue) : 0x7FF8000000000000u);
	}
	void Add(std::int64_t inValue) { AddBits(static_cast<std::uint64_t>(inValue)); }
	template <class T>
	void AddAll(std::span<T const> inValues)
	{
		for (T const value : inValues)
		{
			Add(value);
		}
	}
	void AddAll(std::vector<float> const& inValues) { AddAll(std::span<float const>(inValues)); }

	std::uint64_t GetHash() const { return mHash; }
	std::int64_t GetCount() const { return mCount; }

private:
	void AddBits(std::uint64_t inBits)
	{
		mHash = (mHash ^ inBits) * 0x9E3779B97F4A7C15u;
		mHash ^= mHash >> 32;
		++mCount;
	}

	std::uint64_t mHash = 0xCBF29CE484222325u;
	std::int64_t mCount = 0;
};

// Numbers that are the same with every compiler and library, as those of the distributions of the standard library are
// not (G. L. Steele, D. Lea and C. H. Flood, "Fast splittable pseudorandom number generators", 2014).
class Random
{
public:
	explicit Random(std::uint64_t inSeed)
		: mState(inSeed)
	{
	}

	std::uint64_t GetBits()
	{
		std::uint64_t bits = mState += 0x9E3779B97F4A7C15u;
		bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9u;
		bits = (bits ^ bits >> 27) * 0x94D049BB133111EBu;
		return bits ^ bits >> 31;
	}
	unsigned Below(unsigned inEnd) { return static_cast<unsigned>(GetBits() % inEnd); }
	// From inLow to below inHigh.
	double Between(double inLow, double inHigh)
	{
		return inLow + (inHigh - inLow) * (static_cast<double>(GetBits() >> 11) * 0x1p-53);
	}
	// From -1 to below 1.
	std::vector<float> MakeNoise(std::size_t inCount)
	{
		std::vector<float> noise(inCount);
		for (float& sample : noise)
		{
			sample = static_cast<float>(Between(-1.0, 1.0));
		}
		return noise;
	}

private:
	std::uint64_t mState;
};

// Something of the engine or of the library for hosts that makes numbers of given ones.
struct Group
{
	char const* mName;
	void (*mRun)(Digest& ioDigest);
};

std::span<Group const> GetKernelGroups();
std::span<Group const> GetEngineGroups();
std::span<Group const> GetHostGroups();
std::span<Group const> GetGraphGroups();

} // namespace SonaroDigest
