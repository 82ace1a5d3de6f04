#include "PiecePlan.h"

#include "Files/SystemFiles.h"

#include <algorithm>
#include <set>
#include <variant>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kFewestBlocks = 8;
constexpr std::int64_t kStartsPerPiece = 16;
constexpr std::int64_t kPiecesPerJob = 16;
// Each of them is kept by itself.
constexpr std::int64_t kMostBlocks = 4096;
constexpr std::int64_t kLongestPiece = std::int64_t{1} << 20;
constexpr std::size_t kWantedBytes = std::size_t{1} << 26;
constexpr std::uint64_t kMostReaderBytes = std::uint64_t{1} << 30;
constexpr std::uint64_t kMostGraphBytes = std::uint64_t{1} << 31;
constexpr std::uint64_t kGraphBytes = std::uint64_t{1} << 23;
constexpr std::uint64_t kItemBytes = std::uint64_t{1} << 14;
constexpr std::uint64_t kThreadAddresses = std::uint64_t{1} << 28;
// Of a channel of a file.
constexpr std::uint64_t kReaderBytes = std::uint64_t{8} * 2048 * sizeof(float);

// What a description and all that is nested in it have, each sequence and each recording once.
class Survey
{
public:
	explicit Survey(Sequence::Description const& inDescription) { Add(inDescription); }

	std::uint64_t GetTrackChannels() const { return mTrackChannels; }
	std::uint64_t GetItems() const { return mItems; }
	std::uint64_t GetMedia() const { return mMedia.size(); }
	std::uint64_t GetMediaChannels() const
	{
		std::uint64_t channels = 0;
		for (Sequence::Media const* const media : mMedia)
		{
			channels += media->mLayout.size();
		}
		return channels;
	}

private:
	void Add(Sequence::Description const& inDescription)
	{
		if (!mSequences.insert(&inDescription).second)
		{
			return;
		}
		for (Sequence::Track const& track : inDescription.mTracks)
		{
			mTrackChannels += track.mLayout.size();
			mItems += track.mItems.size();
			for (Sequence::Item const& item : track.mItems)
			{
				AddContent(item);
			}
		}
	}
	void AddContent(Sequence::Item const& inItem)
	{
		if (auto const* const clip = std::get_if<Sequence::Clip>(&inItem.mContent))
		{
			mMedia.insert(clip->mMedia.get());
		}
		for (Sequence::Description const* const sequence : Sequence::ListSequences(inItem))
		{
			Add(*sequence);
		}
	}

	std::set<Sequence::Description const*> mSequences;
	std::set<Sequence::Media const*> mMedia;
	std::uint64_t mTrackChannels = 0;
	std::uint64_t mItems = 0;
};

std::int64_t FindSettlingFrames(Sequence::GraphReport const& inReport)
{
	std::int64_t frames = 0;
	for (Sequence::TrackReport const& track : inReport.mTracks)
	{
		frames = std::max(frames, track.mAheadFrames);
	}
	std::int64_t latency = 0;
	for (Sequence::ItemReport const& item : inReport.mItems)
	{
		latency = std::max(latency, item.mLatencyFrames);
	}
	return frames + latency;
}

std::int64_t RoundUp(std::int64_t inFrames, std::int64_t inBlock)
{
	return (std::max<std::int64_t>(inFrames, 1) + inBlock - 1) / inBlock * inBlock;
}

} // namespace

bool IsWorthPieces(RangeRender const& inRender, unsigned inBlockFrames)
{
	std::int64_t const shortest =
		inRender.mPieceFrames > 0 ? inRender.mPieceFrames : kFewestBlocks * std::int64_t{inBlockFrames};
	return inRender.mRange.mFrames > shortest;
}

PiecePlan PlanPieces(Programme const& inProgramme, RangeRender const& inRender, unsigned inBlockFrames,
	Sequence::GraphReport const& inReport)
{
	std::int64_t const block = inBlockFrames;
	std::int64_t const frames = inRender.mRange.mFrames;
	std::int64_t const fewest =
		RoundUp(std::max(kFewestBlocks * block, kStartsPerPiece * FindSettlingFrames(inReport)), block);
	Survey const survey(*inProgramme.mDescription);
	std::uint64_t const channels =
		inProgramme.GetLayout().size() + (inRender.mView.mTaps.empty() ? 0 : survey.GetTrackChannels());
	auto const findLength = [&](std::size_t inBytes, unsigned inJobs)
	{
		std::uint64_t const pieces = 2 * std::uint64_t{inJobs};
		return static_cast<std::int64_t>(inBytes / (pieces * channels * sizeof(float)));
	};
	auto const findMost = [&](unsigned inJobs) { return findLength(PiecePlan::kMostBytes, inJobs); };
	std::uint64_t const mostThreads = 1 + GetAddressRoom() / kThreadAddresses;
	auto const fits = [&](unsigned inJobs)
	{
		bool const isAlone = !inReport.mWhyInOneRun.empty();
		std::uint64_t const graphs = isAlone ? 1 : inJobs;
		return (isAlone || findMost(inJobs) >= fewest) && inJobs <= mostThreads &&
			   graphs * (kGraphBytes + survey.GetItems() * kItemBytes) <= kMostGraphBytes &&
			   graphs * survey.GetMediaChannels() * kReaderBytes <= kMostReaderBytes &&
			   graphs * survey.GetMedia() <= GetOpenFileLimit() / 2;
	};
	PiecePlan plan;
	plan.mJobs = inRender.mJobs;
	while (plan.mJobs > 1 && !fits(plan.mJobs))
	{
		--plan.mJobs;
	}
	std::int64_t const longest =
		std::min({kLongestPiece, kMostBlocks * block, findLength(kWantedBytes, plan.mJobs)});
	std::int64_t const wanted =
		std::clamp(frames / (kPiecesPerJob * plan.mJobs), fewest, std::max(fewest, longest));
	plan.mPieceFrames =
		inRender.mPieceFrames > 0
			? RoundUp(inRender.mPieceFrames, block)
			: std::max(RoundUp(std::min(wanted, findMost(plan.mJobs)) - block + 1, block), block);
	plan.mPieces = static_cast<std::size_t>((frames + plan.mPieceFrames - 1) / plan.mPieceFrames);
	plan.mJobs = plan.mPieces > 1 ? plan.mJobs : 1;
	return plan;
}

} // namespace SonaroHost
