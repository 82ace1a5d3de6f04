#include "WeightedProgramme.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

namespace
{

using zorvaccelerate::utility::LaneStates;

constexpr double kStretchesPerSecond = 10.0;
// A filter whose sum and difference lie below answers by less than -200 dB.
constexpr float kRestingSum = 1.0e-8f;
constexpr float kRestingDifference = 1.0e-11f;
// 1.5 dB.
constexpr double kSurroundWeight = 1.41;

double GetWeight(zorvmediatypes::AudioChannelDescription inChannel)
{
	using Place = zorvmediatypes::AudioChannelDescription;
	// Of a sound field W alone counts: what a microphone hears that hears all directions alike.
	bool const isUnheard = inChannel == Place::kLowFrequency || inChannel == Place::kAmbisonicY ||
						   inChannel == Place::kAmbisonicZ || inChannel == Place::kAmbisonicX;
	return isUnheard                                                                 ? 0.0
		   : inChannel == Place::kLeftSurround || inChannel == Place::kRightSurround ? kSurroundWeight
																					 : 1.0;
}

} // namespace

WeightedProgramme::WeightedProgramme(SN::AudioChannelLayout const& inLayout, double inSampleRate,
	LoudnessMemory inMemory, LoudnessWindows inWindows)
	: mWeighting(inSampleRate),
	  mChannels(inLayout.size()),
	  mGate(inMemory),
	  mStretchFrames(static_cast<unsigned>(std::lround(inSampleRate / kStretchesPerSecond)))
{
	for (std::size_t channel = 0; channel < inLayout.size(); ++channel)
	{
		mChannels[channel].mWeight = GetWeight(inLayout[channel]) * mWeighting.mPowerGain;
	}
	if (inWindows != LoudnessWindows::kNone)
	{
		mWindow.assign(std::size_t{mStretchFrames} * kStretchesOfWindow, 0.0f);
	}
	if (inWindows == LoudnessWindows::kSeries)
	{
		mRecorder.emplace(inSampleRate, mStretchFrames);
	}
}

bool WeightedProgramme::IsAtRest() const
{
	return std::ranges::all_of(mChannels,
		[](Channel const& inChannel)
		{
			return inChannel.mSums[0] == 0.0f && inChannel.mSums[1] == 0.0f &&
				   inChannel.mDifferences[0] == 0.0f && inChannel.mDifferences[1] == 0.0f;
		});
}

unsigned WeightedProgramme::GetFramesToStep() const
{
	return std::min(kStepFrames - mFramesInStretch % kStepFrames, mStretchFrames - mFramesInStretch);
}

void WeightedProgramme::Load(unsigned inChannel, unsigned inLane, LaneStates& outStates) const
{
	Channel const& channel = mChannels[inChannel];
	for (std::size_t section = 0; section < channel.mSums.size(); ++section)
	{
		outStates.mSums[section][inLane] = channel.mSums[section];
		outStates.mDifferences[section][inLane] = channel.mDifferences[section];
	}
	outStates.mSquares[inLane] = channel.mRecentSquares;
	outStates.mFilteredSquares[inLane] = channel.mRecentFilteredSquares;
}

void WeightedProgramme::Store(unsigned inChannel, unsigned inLane, LaneStates const& inStates)
{
	Channel& channel = mChannels[inChannel];
	for (std::size_t section = 0; section < channel.mSums.size(); ++section)
	{
		channel.mSums[section] = inStates.mSums[section][inLane];
		channel.mDifferences[section] = inStates.mDifferences[section][inLane];
	}
	channel.mRecentSquares = inStates.mSquares[inLane];
	channel.mRecentFilteredSquares = inStates.mFilteredSquares[inLane];
}

void WeightedProgramme::TakeFiltered(
	unsigned inChannel, unsigned inFrames, float const* inFiltered, std::size_t inStride)
{
	auto const weight = static_cast<float>(mChannels[inChannel].mWeight);
	for (std::size_t frame = 0; frame < inFrames; ++frame)
	{
		float const filtered = inFiltered[frame * inStride];
		float& power = mWindow[(mNextInWindow + frame) % mWindow.size()];
		power = (inChannel == 0 ? 0.0f : power) + weight * filtered * filtered;
	}
}

void WeightedProgramme::Advance(unsigned inFrames)
{
	mFrames += inFrames;
	mFramesInStretch += inFrames;
	mNextInWindow = HasWindows() ? (mNextInWindow + inFrames) % mWindow.size() : 0;
	bool const isWhole = mFramesInStretch == mStretchFrames;
	if (isWhole || mFramesInStretch % kStepFrames == 0)
	{
		std::ranges::for_each(mChannels, [this](Channel& ioChannel) { CarryOn(ioChannel); });
	}
	if (isWhole)
	{
		FinishStretch();
	}
}

void WeightedProgramme::AdvanceAtRest(std::int64_t inFrames)
{
	constexpr float kSilence = 0.0f;
	for (std::int64_t left = inFrames; left > 0;)
	{
		auto const frames = static_cast<unsigned>(std::min<std::int64_t>(left, GetFramesToStep()));
		if (HasWindows())
		{
			TakeFiltered(0, frames, &kSilence, 0);
		}
		Advance(frames);
		left -= frames;
	}
}

void WeightedProgramme::CarryOn(Channel& ioChannel)
{
	ioChannel.mSquares += static_cast<double>(ioChannel.mRecentSquares);
	ioChannel.mFilteredSquares += static_cast<double>(ioChannel.mRecentFilteredSquares);
	ioChannel.mRecentSquares = 0.0f;
	ioChannel.mRecentFilteredSquares = 0.0f;
	bool const isResting =
		std::ranges::all_of(ioChannel.mSums, [](float inSum) { return std::fabs(inSum) < kRestingSum; }) &&
		std::ranges::all_of(ioChannel.mDifferences,
			[](float inDifference) { return std::fabs(inDifference) < kRestingDifference; });
	if (isResting)
	{
		ioChannel.mSums = {};
		ioChannel.mDifferences = {};
	}
}

void WeightedProgramme::FinishStretch()
{
	double power = 0.0;
	for (Channel& channel : mChannels)
	{
		power += channel.mWeight * channel.mFilteredSquares;
		channel.mFilteredSquares = 0.0;
	}
	mGate.Add(power / mStretchFrames);
	if (mRecorder)
	{
		// Stretches never reach over the ring's seam.
		std::size_t const end = mNextInWindow > 0 ? mNextInWindow : mWindow.size();
		mRecorder->Add(power / mStretchFrames, mWindow.data() + (end - mStretchFrames));
	}
	mFramesInStretch = 0;
}

double WeightedProgramme::GetSquares() const
{
	double squares = 0.0;
	for (Channel const& channel : mChannels)
	{
		squares += channel.mSquares + static_cast<double>(channel.mRecentSquares);
	}
	return squares;
}

std::optional<LoudnessSeries> WeightedProgramme::GetSeries() const
{
	if (!mRecorder)
	{
		return std::nullopt;
	}
	LoudnessRecorder whole = *mRecorder;
	whole.AddRest(mWindow.data() + (mNextInWindow - mFramesInStretch), mFramesInStretch, GetMomentary(),
		GetShortTerm());
	return whole.GetSeries();
}

double WeightedProgramme::GetRecent(unsigned inStretches) const
{
	std::size_t const frames = std::size_t{mStretchFrames} * inStretches;
	// The oldest come first: where the window reaches over the ring's seam, those at its end.
	std::size_t const beforeSeam = frames > mNextInWindow ? frames - mNextInWindow : 0;
	double power = 0.0;
	auto const add = [&power](float inPower) { power += static_cast<double>(inPower); };
	std::for_each(mWindow.end() - static_cast<std::ptrdiff_t>(beforeSeam), mWindow.end(), add);
	std::for_each(mWindow.begin() + static_cast<std::ptrdiff_t>(mNextInWindow - (frames - beforeSeam)),
		mWindow.begin() + static_cast<std::ptrdiff_t>(mNextInWindow), add);
	return ToLoudness(power / static_cast<double>(frames));
}

} // namespace SonaroHost
