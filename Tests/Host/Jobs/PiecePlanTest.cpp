// How many threads there are, and how long their pieces.

#include "Render/Piece/PiecePlan.h"
#include "Files/SystemFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <memory>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

namespace SonaroHost::Testing::PiecePlanTest
{

namespace
{

constexpr unsigned kBlock = 4096;

struct Case
{
	char const* mName;
	unsigned mJobs;
	std::int64_t mFrames;
	std::size_t mTracks;
	unsigned mChannels;
	std::int64_t mAhead;
	bool mHasTaps;
	bool mIsInOneRun;
	unsigned mExpected;
};

// A limit of the process, such as that of open files, while it lives.
class Limit
{
public:
	Limit(decltype(RLIMIT_AS) inResource, rlim_t inMost)
		: mResource(inResource)
	{
		getrlimit(mResource, &mBefore);
		rlimit const limit{std::min(inMost, mBefore.rlim_max), mBefore.rlim_max};
		setrlimit(mResource, &limit);
	}
	~Limit() { setrlimit(mResource, &mBefore); }
	Limit(Limit const&) = delete;
	Limit& operator=(Limit const&) = delete;

private:
	decltype(RLIMIT_AS) mResource;
	rlimit mBefore{};
};

// Each track has a recording of its own.
Programme MakeProgramme(Case const& inCase)
{
	auto description = std::make_shared<Sequence::Description>();
	description->mLayout.resize(2);
	for (std::size_t i = 0; i < inCase.mTracks; ++i)
	{
		Sequence::Track& track = description->mTracks.emplace_back();
		track.mLayout.resize(inCase.mChannels);
		auto media = std::make_shared<Sequence::Media>();
		media->mLayout.resize(inCase.mChannels);
		track.mItems.emplace_back().mContent = Sequence::Clip{media, 0, {}};
	}
	Programme programme;
	programme.mDescription = description;
	return programme;
}

TEST(PiecePlan, ThreadsAreAsManyAsFilesMemoryAndLengthAllow)
{
	Limit const limit(RLIMIT_NOFILE, 600);
	std::size_t const files = GetOpenFileLimit();
	constexpr std::int64_t kHour = std::int64_t{48000} * 3600;
	Case const cases[] = {
		{"as many as wanted", 8, kHour, 32, 2, 0, true, false, 8},
		{"one", 1, kHour, 32, 2, 0, true, false, 1},
		{"a short programme", 8, 8 * kBlock, 1, 2, 0, false, false, 1},
		{"shorter than what effects settle", 8, kHour, 1, 2, kHour / 16, false, false, 1},
		{"files for three threads", 8, kHour, files / 6, 1, 0, false, false, 3},
		{"files for one thread", 8, kHour, files / 2, 1, 0, false, false, 1},
		{"files for one graph, which is enough", 8, kHour, files / 2, 1, 0, false, true, 8},
		{"channels that leave little room for pieces", 64, kHour, 50, 64, 0, true, false, 0},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		Programme const programme = MakeProgramme(test);
		RangeRender render;
		render.mRange = {0, test.mFrames};
		render.mJobs = test.mJobs;
		if (test.mHasTaps)
		{
			render.mView.mTaps["/0"] = {};
		}
		Sequence::GraphReport report;
		report.mTracks.push_back({"", test.mAhead, 0, 0});
		report.mWhyInOneRun = test.mIsInOneRun ? "it remembers" : "";
		PiecePlan const plan = PlanPieces(programme, render, kBlock, report);
		if (test.mExpected > 0)
		{
			EXPECT_EQ(plan.mJobs, test.mExpected);
		}
		EXPECT_LE(plan.mJobs, test.mJobs);
		EXPECT_EQ(plan.mPieceFrames % kBlock, 0);
		std::size_t const channels = 2 + (test.mHasTaps ? test.mTracks * test.mChannels : 0);
		EXPECT_LE(plan.GetWindow() * static_cast<std::size_t>(plan.mPieceFrames) * channels * sizeof(float),
			PiecePlan::kMostBytes);
		if (plan.mJobs > 1 && !test.mIsInOneRun)
		{
			EXPECT_GE(plan.mPieceFrames, 8 * kBlock);
			EXPECT_GE(plan.mPieceFrames, 16 * test.mAhead);
		}
		std::int64_t const covered = static_cast<std::int64_t>(plan.mPieces) * plan.mPieceFrames;
		EXPECT_GE(covered, test.mFrames);
		EXPECT_LT(covered - plan.mPieceFrames, test.mFrames);
	}
}

TEST(PiecePlan, ThreadsAreFewUnderALimitOfAddresses)
{
	Case const test{"", 8, std::int64_t{48000} * 3600, 2, 2, 0, false, false, 0};
	RangeRender render;
	render.mRange = {0, test.mFrames};
	render.mJobs = test.mJobs;
	Sequence::GraphReport const report;
	auto const findJobs = [&] { return PlanPieces(MakeProgramme(test), render, kBlock, report).mJobs; };
	EXPECT_EQ(GetAddressRoom(), std::numeric_limits<std::uint64_t>::max());
	EXPECT_EQ(findJobs(), 8u);
	// Sanitizers take addresses by the terabyte, so limits are set from what is used already.
	std::uint64_t pages = 0;
	std::ifstream("/proc/self/statm") >> pages;
	std::uint64_t const used = pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
	for (auto const& [megabytes, jobs] : {std::pair(100u, 1u), std::pair(700u, 3u), std::pair(4000u, 8u)})
	{
		SCOPED_TRACE(megabytes);
		Limit const limit(RLIMIT_AS, used + (std::uint64_t{megabytes} << 20));
		EXPECT_EQ(findJobs(), jobs);
	}
}

} // namespace

} // namespace SonaroHost::Testing::PiecePlanTest
