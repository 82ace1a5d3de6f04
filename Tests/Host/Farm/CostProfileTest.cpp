#include "Render/Farm/CostProfile.h"
#include "SonaroHost/Base/ChannelLayouts.h"

#include <gtest/gtest.h>

#include <memory>

namespace SonaroHost::Testing::CostProfileTest
{

namespace
{

constexpr int kRate = 48000;
constexpr unsigned kBlock = 4096;

SN::TickTime Seconds(double inSeconds)
{
	return SN::TickTime::FromSeconds(inSeconds);
}

Sequence::Item MakeClip(double inStart, double inEnd, double inSpeed)
{
	auto media = std::make_shared<Sequence::Media>();
	media->mLayout = MakeLayoutOfChannels(2);
	Sequence::Item item;
	item.mStart = Seconds(inStart);
	item.mEnd = Seconds(inEnd);
	item.mSpeed = inSpeed;
	item.mContent = Sequence::Clip{media, 0, {}};
	return item;
}

// Ten minutes with a plain clip, and in the last of them one that is resampled on each of so many tracks.
std::shared_ptr<Sequence::Description> MakeDense(std::size_t inTracks)
{
	auto description = std::make_shared<Sequence::Description>();
	description->mLayout = MakeLayoutOfChannels(2);
	for (std::size_t i = 0; i <= inTracks; ++i)
	{
		Sequence::Track& track = description->mTracks.emplace_back();
		track.mLayout = description->mLayout;
		track.mItems = {i == 0 ? MakeClip(0.0, 600.0, 1.0) : MakeClip(540.0, 600.0, 1.5)};
	}
	return description;
}

std::vector<FarmPiece> Cut(
	std::shared_ptr<Sequence::Description const> const& inDescription, std::size_t inPieces)
{
	Programme programme;
	programme.mDescription = inDescription;
	programme.mFrames = std::int64_t{600} * kRate;
	return Farm::CostProfile(programme).Cut({0, programme.mFrames}, kBlock, inPieces);
}

void ExpectGoodCut(std::vector<FarmPiece> const& inPieces, std::int64_t inFrames, double inTolerance)
{
	std::int64_t end = 0;
	double cost = 0.0;
	for (FarmPiece const& piece : inPieces)
	{
		EXPECT_EQ(piece.mRange.mFirstFrame, end);
		EXPECT_EQ(piece.mRange.mFirstFrame % kBlock, 0);
		EXPECT_GT(piece.mRange.mFrames, 0);
		end += piece.mRange.mFrames;
		cost += piece.mCost;
	}
	EXPECT_EQ(end, inFrames);
	for (FarmPiece const& piece : inPieces)
	{
		EXPECT_NEAR(piece.mCost * static_cast<double>(inPieces.size()) / cost, 1.0, inTolerance);
	}
}

TEST(CostProfile, PiecesCostTheSameAndFollowEachOther)
{
	constexpr std::int64_t kFrames = std::int64_t{600} * kRate;
	for (std::size_t const pieces : {1u, 2u, 7u, 64u})
	{
		SCOPED_TRACE(pieces);
		auto const cut = Cut(MakeDense(20), pieces);
		ASSERT_EQ(cut.size(), pieces);
		ExpectGoodCut(cut, kFrames, 0.2);
	}
	// Most of the work is in the last minute.
	auto const halves = Cut(MakeDense(20), 2);
	EXPECT_GT(halves[0].mRange.mFrames, kFrames * 9 / 10);
	// As many as there are blocks, at most.
	EXPECT_EQ(Cut(MakeDense(1), 100000).size(), static_cast<std::size_t>((kFrames + kBlock - 1) / kBlock));
}

// The same tracks, a level deeper and at another place.
TEST(CostProfile, NestedSequencesCostWhatTheyHold)
{
	auto outer = std::make_shared<Sequence::Description>();
	outer->mLayout = MakeLayoutOfChannels(2);
	Sequence::Track& track = outer->mTracks.emplace_back();
	track.mLayout = outer->mLayout;
	Sequence::Item nest;
	nest.mEnd = Seconds(100.0);
	nest.mContent = Sequence::Nest{MakeDense(20), Seconds(500.0)};
	track.mItems = {nest};
	auto const cut = Cut(outer, 2);
	// The dense minute lies at 40 to 100 seconds: half of its work ends after 70.
	double const seconds = static_cast<double>(cut[0].mRange.mFrames) / kRate;
	EXPECT_GT(seconds, 65.0);
	EXPECT_LT(seconds, 80.0);
}

TEST(CostProfile, NoiseReductionIsCounted)
{
	auto const getCost = [](bool inIsDenoised)
	{
		auto const description = MakeDense(1);
		auto& clip = std::get<Sequence::Clip>(description->mTracks[0].mItems[0].mContent);
		auto media = std::make_shared<Sequence::Media>(*clip.mMedia);
		media->mIsDenoised = inIsDenoised;
		clip.mMedia = media;
		return Cut(description, 1)[0].mCost;
	};
	EXPECT_GT(getCost(true), 5.0 * getCost(false));
}

} // namespace

} // namespace SonaroHost::Testing::CostProfileTest
