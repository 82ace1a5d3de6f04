#pragma once

#include "SonaroHost/Metering/LoudnessOptions.h"

#include <array>
#include <cstdint>
#include <vector>

namespace SonaroHost
{

// The loudness of a weighted power in LUFS; minus infinity for 0.
double ToLoudness(double inPower);
// The inverse.
double ToPower(double inLoudness);

// The integrated loudness of a programme, gated by EBU R 128, from the powers of its stretches of 100 ms.
class LoudnessGate
{
public:
	explicit LoudnessGate(LoudnessMemory inMemory);

	// inPower: the power of the next stretch. With kFixed this allocates nothing.
	void Add(double inPower);
	double GetLoudness() const;

private:
	// A class of loudness, or a single block.
	struct Blocks
	{
		double mPower = 0.0;
		std::int64_t mCount = 0;
	};

	void AddBlock(double inPower);

	bool mIsGrowing;
	// A ring of the last stretches' powers: a block is four of them.
	std::array<double, 4> mStretches{};
	std::int64_t mStretch = 0;
	// All blocks above the absolute gate.
	Blocks mAll;
	// The power of each block.
	std::vector<double> mPowers;
	// Blocks sorted by loudness, so that they change sides of the relative gate a class at a time.
	std::vector<Blocks> mClasses;
};

} // namespace SonaroHost
