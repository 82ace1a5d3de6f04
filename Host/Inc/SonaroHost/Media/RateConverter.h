#pragma once

#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Media/RateQuality.h"
#include "SonaroHost/Media/SampleConverter.h"

#include <cstdint>
#include <memory>
#include <span>

namespace SonaroHost
{

class RateTable;

// Converts samples from one rate to another, or plays them at another speed, by their positions.
//
// Position  Output n stands at the input's frame mFirst + mOffset + n * step, an exact fraction: after any number of
//           outputs nothing has drifted. n goes from -2^42 to 2^42.
// Meaning   An output is a sum of the input around its position, weighted by a sinc in a Kaiser window, symmetric, so
//           that nothing is late. Where outputs are further apart than inputs, the filter is longer by as much and cuts
//           off below half the output's rate.
// Filters   One row of coefficients for each place between two frames that can occur, as far as 2^19 numbers
//           go; otherwise rows at a fixed distance, with a cubic between them. Converters that need the same
//           table share one.
// NaN       Reaches the outputs whose filter covers it, GetTaps frames, and no others.
// Threads   Any, at the same time. The constructor allocates, and takes a lock; nothing else does.
class RateConverter final : public SampleConverter
{
public:
	// Steps of a larger magnitude than this are refused.
	static constexpr std::int64_t kLargestStep = 1000;

	// A place of the input: a frame, and how far after it.
	struct Position
	{
		std::int64_t mFrame = 0;
		// Any number; it is kept to 2^-30 of a frame at least.
		Ratio mOffset;
	};

	// inStep: frames of the input from one output to the next; below 0 the input is read backwards. Throws a
	// HostError for 0 and beyond kLargestStep.
	RateConverter(Ratio const& inStep, Position const& inFirst, RateQuality inQuality = RateQuality::kFull);

	// Half of them up to an output's position, half after it.
	unsigned GetTaps() const override;
	Span GetInput(std::int64_t inFirst, std::int64_t inCount) const override;
	std::int64_t CountInput(std::int64_t inOutputs) const override;
	std::int64_t CountOutputs(std::int64_t inFrames) const override;
	bool IsBackwards(std::int64_t) const override { return mStride < 0; }
	std::int64_t FindTurn(std::int64_t, std::int64_t inEnd) const override { return inEnd; }

	void Convert(std::int64_t inFirst, unsigned inCount, std::span<Channel const> inChannels) const override;

private:
	__extension__ using Wide = __int128;

	struct Place
	{
		std::int64_t mFrame;
		std::int64_t mPhase;
	};

	Place Find(std::int64_t inOutput) const;

	// Positions in fractions of a frame: output n stands at (mStart + n * mStride) / mPhases from frame mFrame on.
	std::int64_t mFrame;
	std::int64_t mPhases;
	Wide mStart;
	Wide mStride;
	// Outputs after which phases come again, and the frames that pass meanwhile.
	std::int64_t mPeriod;
	std::int64_t mPeriodFrames;
	std::shared_ptr<RateTable const> mTable;
};

} // namespace SonaroHost
