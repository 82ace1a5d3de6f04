#include "SoakDevice.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace SonaroBenchmarks
{

namespace
{

// Converted samples are a little off.
constexpr float kFull = 0.9999f;
constexpr double kFastest = 4.5;
// How far a converter's window mixes both sides of a seam, in frames.
constexpr double kWindow = 400.0;
// Of converted samples, as a share of them.
constexpr double kNoise = 2e-6;
// And how far it goes beyond them, as a share of the step.
constexpr double kOvershoot = 0.15;
constexpr std::size_t kMostLoops = 64;
constexpr std::size_t kMostCommands = 12;
// Unknown seams of which a line is printed.
constexpr std::uint64_t kMostLines = 20;

} // namespace

SoakDevice::Counts SoakDevice::GetCounts() const
{
	std::lock_guard const lock(mMutex);
	return mCounts;
}

void SoakDevice::AddLoop(double inFirst, double inEnd)
{
	std::lock_guard const lock(mMutex);
	mLoops.emplace_back(inFirst, inEnd);
	if (mLoops.size() > kMostLoops)
	{
		mLoops.erase(mLoops.begin());
	}
}

void SoakDevice::NoteCommand(std::string const& inCommand)
{
	std::lock_guard const lock(mMutex);
	mCommands.push_back("at " + std::to_string(mCounts.mFrames) + " " + inCommand);
	if (mCommands.size() > kMostCommands)
	{
		mCommands.pop_front();
	}
}

void SoakDevice::Open(SonaroHost::Playback::DeviceFormat const& inFormat)
{
	ClockedDevice::Open(inFormat);
	std::lock_guard const lock(mMutex);
	mWasFull = false;
}

void SoakDevice::Take(float const* inSamples, unsigned inFrames)
{
	std::lock_guard const lock(mMutex);
	for (unsigned i = 0; i < inFrames; ++i)
	{
		TakeFrame(inSamples[2 * i], inSamples[2 * i + 1]);
	}
	mCounts.mFrames += inFrames;
}

void SoakDevice::TakeFrame(float inPlace, float inLevel)
{
	bool const isFull = inLevel >= kFull;
	double const place = isFull ? static_cast<double>(inPlace) / static_cast<double>(inLevel) : 0.0;
	mCounts.mSounding += isFull ? 1 : 0;
	if (isFull && mWasFull)
	{
		TakeStep(place);
	}
	mCounts.mGaps += isFull && mCounts.mIsSilent && mHasBegun ? 1 : 0;
	mCounts.mIsSilent = isFull ? false : mCounts.mIsSilent || inLevel == 0.0f;
	mHasBegun = mHasBegun || isFull;
	mCounts.mLast = isFull ? place : mCounts.mLast;
	mWasFull = isFull;
}

void SoakDevice::TakeStep(double inPlace)
{
	if (std::abs(inPlace - mCounts.mLast) <= kFastest + kNoise * inPlace)
	{
		return;
	}
	++mCounts.mSeams;
	double const low = std::min(inPlace, mCounts.mLast);
	double const high = std::max(inPlace, mCounts.mLast);
	bool const isKnown = std::ranges::any_of(mLoops,
		[&](auto const& inLoop)
		{
			double const around = kWindow + kOvershoot * (inLoop.second - inLoop.first);
			return low >= inLoop.first - around && high <= inLoop.second + around;
		});
	if (!isKnown && !IsAtAnEnd(low, high))
	{
		++mCounts.mUnknownSeams;
		PrintUnknownSeam(inPlace);
		mCounts.mUnknownFrom = mCounts.mLast;
		mCounts.mUnknownTo = inPlace;
	}
}

bool SoakDevice::IsAtAnEnd(double inLow, double inHigh) const
{
	return inHigh <= kWindow || (inLow >= mEnd - kWindow && inHigh <= mEnd + kWindow);
}

void SoakDevice::PrintUnknownSeam(double inPlace) const
{
	if (mCounts.mUnknownSeams > kMostLines)
	{
		return;
	}
	std::printf("unknown seam in the block at %lld from %.2f to %.2f, after",
		static_cast<long long>(mCounts.mFrames), mCounts.mLast, inPlace);
	for (std::string const& command : mCommands)
	{
		std::printf(" [%s]", command.c_str());
	}
	std::printf("\n");
	std::fflush(stdout);
}

} // namespace SonaroBenchmarks
