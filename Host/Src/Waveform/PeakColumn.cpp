#include "SonaroHost/Waveform/PeakColumn.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace SonaroHost
{

namespace
{

// Four floats that any processor here handles at once; left to itself, g++ keeps such loops scalar.
using Vector [[gnu::vector_size(16)]] = float;
constexpr unsigned kWidth = 4;
// Enough that the next result of a kind does not wait for the one before.
constexpr unsigned kVectors = 2;
constexpr unsigned kLanes = kWidth * kVectors;
// Samples after which the squares go over to doubles.
constexpr unsigned kRun = 1024;
static_assert(kRun % kLanes == 0);

struct Extremes
{
	// What is not a number fails each comparison.
	void Add(float inSample)
	{
		mMinimum = inSample < mMinimum ? inSample : mMinimum;
		mMaximum = inSample > mMaximum ? inSample : mMaximum;
	}

	float mMinimum;
	float mMaximum;
};

// Returns the squares, which are no number if a sample is none. inCount is a multiple of kLanes.
float AddRun(float const* inSamples, unsigned inCount, Extremes& ioExtremes)
{
	Vector minimum[kVectors];
	Vector maximum[kVectors];
	Vector squares[kVectors];
	for (unsigned k = 0; k < kVectors; ++k)
	{
		minimum[k] = Vector{} + ioExtremes.mMinimum;
		maximum[k] = Vector{} + ioExtremes.mMaximum;
		squares[k] = Vector{};
	}
	for (unsigned i = 0; i < inCount; i += kLanes)
	{
		for (unsigned k = 0; k < kVectors; ++k)
		{
			Vector samples;
			std::memcpy(&samples, inSamples + i + k * kWidth, sizeof samples);
			minimum[k] = samples < minimum[k] ? samples : minimum[k];
			maximum[k] = samples > maximum[k] ? samples : maximum[k];
			squares[k] += samples * samples;
		}
	}
	float sum = 0.0f;
	for (unsigned lane = 0; lane < kLanes; ++lane)
	{
		ioExtremes.Add(minimum[lane / kWidth][lane % kWidth]);
		ioExtremes.Add(maximum[lane / kWidth][lane % kWidth]);
		sum += squares[lane / kWidth][lane % kWidth];
	}
	return sum;
}

// The same for any count, sample by sample, and for those alone that are numbers.
double AddOneByOne(float const* inSamples, unsigned inCount, Extremes& ioExtremes)
{
	double squares = 0.0;
	for (unsigned i = 0; i < inCount; ++i)
	{
		ioExtremes.Add(inSamples[i]);
		auto const sample = static_cast<double>(inSamples[i]);
		squares += std::isnan(sample) ? 0.0 : sample * sample;
	}
	return squares;
}

} // namespace

void PeakColumn::Add(float const* inSamples, unsigned inCount)
{
	if (!inSamples)
	{
		AddSilence(inCount);
		return;
	}
	Extremes extremes{mMinimum, mMaximum};
	unsigned done = 0;
	for (unsigned const whole = inCount - inCount % kLanes; done < whole;)
	{
		unsigned const count = std::min(kRun, whole - done);
		float const squares = AddRun(inSamples + done, count, extremes);
		mSquares += std::isnan(squares) ? AddOneByOne(inSamples + done, count, extremes)
										: static_cast<double>(squares);
		done += count;
	}
	mSquares += AddOneByOne(inSamples + done, inCount - done, extremes);
	mMinimum = extremes.mMinimum;
	mMaximum = extremes.mMaximum;
	mCount += inCount;
}

void PeakColumn::AddSilence(double inCount)
{
	if (inCount > 0.0)
	{
		mMinimum = std::min(mMinimum, 0.0f);
		mMaximum = std::max(mMaximum, 0.0f);
		mCount += inCount;
	}
}

void PeakColumn::Add(PeakColumn const& inOther, double inCount)
{
	mMinimum = std::min(mMinimum, inOther.mMinimum);
	mMaximum = std::max(mMaximum, inOther.mMaximum);
	mSquares += inOther.mSquares * (inCount / inOther.mCount);
	mCount += inCount;
}

float PeakColumn::GetRms() const
{
	return IsEmpty() ? 0.0f : static_cast<float>(std::sqrt(mSquares / mCount));
}

} // namespace SonaroHost
