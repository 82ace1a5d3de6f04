#include "CostProfile.h"

#include <algorithm>
#include <cmath>
#include <variant>

namespace SonaroHost::Farm
{

namespace
{

constexpr double kResampling = 6.0;
constexpr double kPreparing = 40.0;
// Measured beside resampling; it is more where several tracks read one file at different places.
constexpr double kDenoising = 25.0;
constexpr double kEffect = 5.0;
constexpr double kStage = 0.2;
constexpr double kTrack = 0.1;

double GetChainCost(Sequence::Chain const& inChain, double inChannels)
{
	double cost = 0.0;
	for (Sequence::Stage const& stage : inChain.mStages)
	{
		cost += std::holds_alternative<Sequence::Effect>(stage) ? kEffect : kStage;
	}
	return cost * inChannels;
}

double GetSpeed(Sequence::Item const& inItem)
{
	double const speed = std::abs(inItem.mSpeed);
	return inItem.mSpeedCurve || !(speed > 0.0) ? 1.0 : speed;
}

bool IsResampled(Sequence::Item const& inItem)
{
	return inItem.mSpeedCurve || inItem.mSpeed != 1.0;
}

} // namespace

CostProfile::CostProfile(Programme const& inProgramme)
	: mSampleRate(inProgramme.mSampleRate),
	  mFirstFrame(inProgramme.mFirstFrame),
	  mSteps(Measure(*inProgramme.mDescription))
{
}

CostProfile::Steps const& CostProfile::Measure(Sequence::Description const& inDescription)
{
	auto const [entry, isNew] = mDone.try_emplace(&inDescription);
	if (!isNew)
	{
		return entry->second;
	}
	Steps steps;
	double everywhere =
		1.0 + GetChainCost(inDescription.mMaster, static_cast<double>(inDescription.mLayout.size()));
	for (Sequence::Track const& track : inDescription.mTracks)
	{
		auto const channels = static_cast<double>(track.mLayout.size());
		everywhere += kTrack * channels + GetChainCost(track.mChain, channels);
		for (Sequence::Item const& item : track.mItems)
		{
			Add(item, channels, steps);
		}
	}
	for (Sequence::Submix const& submix : inDescription.mSubmixes)
	{
		auto const channels = static_cast<double>(submix.mLayout.size());
		everywhere += kTrack * channels + GetChainCost(submix.mChain, channels);
	}
	steps.push_back({0.0, everywhere});
	std::ranges::stable_sort(steps, {}, &Step::mSeconds);
	return mDone[&inDescription] = std::move(steps);
}

void CostProfile::Add(Sequence::Item const& inItem, double inTrackChannels, Steps& ioSteps)
{
	double cost = GetChainCost(inItem.mChain, inTrackChannels);
	if (auto const* const clip = std::get_if<Sequence::Clip>(&inItem.mContent))
	{
		cost += GetClipCost(*clip, inItem);
	}
	auto const sequences = Sequence::ListSequences(inItem);
	for (Sequence::Description const* const sequence : sequences)
	{
		// Of the angles of a multicam one is heard at a time.
		AddSequence(*sequence, inItem, 1.0 / static_cast<double>(sequences.size()), ioSteps);
	}
	cost += !sequences.empty() && IsResampled(inItem) ? kResampling * inTrackChannels : 0.0;
	ioSteps.push_back({inItem.mStart.GetSeconds(), cost});
	ioSteps.push_back({inItem.mEnd.GetSeconds(), -cost});
}

double CostProfile::GetClipCost(Sequence::Clip const& inClip, Sequence::Item const& inItem) const
{
	if (!inClip.mMedia)
	{
		return 0.0;
	}
	auto const channels = static_cast<double>(
		inClip.mChannels.empty() ? inClip.mMedia->mLayout.size() : inClip.mChannels.size());
	double const rate = inClip.mMedia->mSampleRate * GetSpeed(inItem) / mSampleRate;
	bool const isResampled = IsResampled(inItem) || inClip.mMedia->mSampleRate != mSampleRate;
	return channels *
		   (rate + (isResampled ? kResampling : 0.0) + (inClip.mMedia->mIsFile ? 0.0 : kPreparing) +
			   (inClip.mMedia->mIsDenoised ? kDenoising * rate : 0.0));
}

// A sequence that is heard backwards costs what it costs forwards, from the same time on.
void CostProfile::AddSequence(
	Sequence::Description const& inDescription, Sequence::Item const& inItem, double inShare, Steps& ioSteps)
{
	double const speed = GetSpeed(inItem);
	double const start = inItem.mStart.GetSeconds();
	double const end = inItem.mEnd.GetSeconds();
	double const inner = Sequence::GetSequenceStart(inItem).GetSeconds();
	double level = 0.0;
	for (Step const& step : Measure(inDescription))
	{
		double const seconds = std::max(start, start + (step.mSeconds - inner) / speed);
		if (seconds >= end)
		{
			break;
		}
		level += step.mCost * speed * inShare;
		ioSteps.push_back({seconds, step.mCost * speed * inShare});
	}
	ioSteps.push_back({end, -level});
}

std::vector<FarmPiece> CostProfile::Cut(
	ProgrammeRange const& inRange, unsigned inBlockFrames, std::size_t inPieces) const
{
	std::int64_t const blocks = (inRange.mFrames + inBlockFrames - 1) / inBlockFrames;
	// What all blocks before each cost.
	std::vector<double> costs(static_cast<std::size_t>(blocks) + 1);
	double level = 0.0;
	auto step = mSteps.begin();
	for (std::int64_t block = 0; block < blocks; ++block)
	{
		std::int64_t const end = mFirstFrame + inRange.mFirstFrame + (block + 1) * inBlockFrames;
		for (; step != mSteps.end() && step->mSeconds * mSampleRate < static_cast<double>(end); ++step)
		{
			level += step->mCost;
		}
		auto const index = static_cast<std::size_t>(block);
		costs[index + 1] = costs[index] + std::max(level, kTrack) * inBlockFrames / mSampleRate;
	}
	std::vector<FarmPiece> pieces;
	std::int64_t first = 0;
	auto const count = std::min<std::int64_t>(static_cast<std::int64_t>(inPieces), blocks);
	for (std::int64_t piece = 1; piece <= count; ++piece)
	{
		double const wanted = costs.back() * static_cast<double>(piece) / static_cast<double>(count);
		std::int64_t const nearest = std::ranges::lower_bound(costs, wanted) - costs.begin();
		std::int64_t const end =
			piece == count ? blocks : std::clamp(nearest, first + 1, blocks - (count - piece));
		std::int64_t const firstFrame = first * inBlockFrames;
		pieces.push_back(
			{{inRange.mFirstFrame + firstFrame, std::min(end * inBlockFrames, inRange.mFrames) - firstFrame},
				costs[static_cast<std::size_t>(end)] - costs[static_cast<std::size_t>(first)]});
		first = end;
	}
	return pieces;
}

} // namespace SonaroHost::Farm
