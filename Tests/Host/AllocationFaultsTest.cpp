// Lets each allocation of what runs fail once, and counts what is left behind. The replaced operators are the whole
// program's, shared libraries included.

#include "Media.h"
#include "Render/Piece/PieceRun.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/AudioFileReader.h"
#include "SonaroHost/Media/AudioFileSource.h"
#include "SonaroHost/Otio/Reader.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Playback/NullDevice.h"
#include "SonaroHost/Playback/Playback.h"
#include "SonaroHost/Render/TimelineFarm.h"
#include "SonaroHost/Render/TimelineProgramme.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "TimelineJson.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>
#include <set>

namespace
{

// Counts down to the allocation that fails; below 0 none does.
std::atomic<std::int64_t> sLeft{-1};
// The same for one thread.
thread_local std::int64_t sLeftHere = -1;
std::atomic<std::int64_t> sBlocks{0};

bool FailsNow()
{
	bool const isHere = sLeftHere >= 0 && sLeftHere-- == 0;
	return isHere || (sLeft.load(std::memory_order_relaxed) >= 0 && sLeft.fetch_sub(1) == 0);
}

void* TryToAllocate(std::size_t inSize, std::size_t inAlignment)
{
	if (FailsNow())
	{
		return nullptr;
	}
	std::size_t const size = (inSize + inAlignment - 1) / inAlignment * inAlignment;
	void* const block = std::aligned_alloc(inAlignment, size == 0 ? inAlignment : size);
	sBlocks += block ? 1 : 0;
	return block;
}

void* Allocate(std::size_t inSize, std::size_t inAlignment = alignof(std::max_align_t))
{
	void* const block = TryToAllocate(inSize, inAlignment);
	if (!block)
	{
		throw std::bad_alloc();
	}
	return block;
}

void Free(void* inBlock)
{
	sBlocks -= inBlock ? 1 : 0;
	std::free(inBlock);
}

} // namespace

void* operator new(std::size_t inSize)
{
	return Allocate(inSize);
}

void* operator new(std::size_t inSize, std::align_val_t inAlignment)
{
	return Allocate(inSize, static_cast<std::size_t>(inAlignment));
}

void* operator new(std::size_t inSize, std::nothrow_t const&) noexcept
{
	return TryToAllocate(inSize, alignof(std::max_align_t));
}

void* operator new[](std::size_t inSize)
{
	return Allocate(inSize);
}

void* operator new[](std::size_t inSize, std::align_val_t inAlignment)
{
	return Allocate(inSize, static_cast<std::size_t>(inAlignment));
}

void operator delete(void* inBlock) noexcept
{
	Free(inBlock);
}

void operator delete(void* inBlock, std::size_t) noexcept
{
	Free(inBlock);
}

void operator delete(void* inBlock, std::align_val_t) noexcept
{
	Free(inBlock);
}

void operator delete(void* inBlock, std::size_t, std::align_val_t) noexcept
{
	Free(inBlock);
}

void operator delete[](void* inBlock) noexcept
{
	Free(inBlock);
}

void operator delete[](void* inBlock, std::size_t) noexcept
{
	Free(inBlock);
}

void operator delete[](void* inBlock, std::align_val_t) noexcept
{
	Free(inBlock);
}

void operator delete[](void* inBlock, std::size_t, std::align_val_t) noexcept
{
	Free(inBlock);
}

namespace SonaroHost::Testing::AllocationFaultsTest
{

// Runs with one failing allocation after the other until none fails.
// inCheck: looks at what is left after each.
void FailEach(
	std::function<void()> const& inRun, std::function<void()> const& inCheck = [] {})
{
	// What is kept for the whole process is made first.
	inRun();
	inRun();
	std::int64_t failures = 0;
	std::int64_t more = 0;
	bool hasFailed = true;
	for (std::int64_t skipped = 0; hasFailed; ++skipped)
	{
		std::int64_t const before = sBlocks;
		sLeft = skipped;
		try
		{
			inRun();
		}
		catch (std::bad_alloc const&)
		{
		}
		hasFailed = sLeft < 0;
		sLeft = -1;
		failures += hasFailed ? 1 : 0;
		// What is kept may have been let go of, until it is wanted again.
		more += sBlocks - before;
		ASSERT_LE(more, 0) << "after allocation " << skipped << " failed";
		ASSERT_NO_FATAL_FAILURE(inCheck()) << "after allocation " << skipped << " failed";
	}
	EXPECT_GT(failures, 10);
}

class AllocationFaultsTest : public testing::Test
{
protected:
	void SetUp() override
	{
		WriteSound(mFolder / "tone.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, 48000, 4800));
		mTimeline = Timeline(
			{Track("A1", {Clip("tone", "tone.wav", 0.0, 0.05), Clip("again", "tone.wav", 0.0, 0.04)}),
				WithSettings(
					Track("A2", {Clip("other", "tone.wav", 0.02, 0.06)}), {{"gain", -6.0}, {"pan", 0.5}})});
		WriteBytes(mFolder / "edit.otio", mTimeline.dump());
	}

	// Fails each allocation of what writes a file.
	void WriteAllOrNothing(std::filesystem::path const& inOutput, std::function<void()> const& inWrite)
	{
		std::size_t const inputs = mFolder.List().size();
		inWrite();
		std::string const whole = ReadBytes(inOutput);
		FailEach(
			[&]
			{
				std::filesystem::remove(inOutput);
				inWrite();
			},
			[&]
			{
				bool const isThere = std::filesystem::exists(inOutput);
				ASSERT_EQ(mFolder.List().size(), isThere ? inputs + 1 : inputs) << "temporary files are left";
				ASSERT_TRUE(!isThere || ReadBytes(inOutput) == whole);
			});
	}

	TemporaryFolder mFolder;
	Json mTimeline;
};

TEST_F(AllocationFaultsTest, ReadingATimelineLosesNothing)
{
	std::string const text = mTimeline.dump();
	FailEach([&text] { Otio::ReadDocument(text, "edit.otio"); });
}

TEST_F(AllocationFaultsTest, OpeningAndReadingMediaLosesNothing)
{
	std::string const path = (mFolder / "tone.wav").string();
	FailEach([&path] { AudioFileReader(path).GetBlock(0); });
}

TEST_F(AllocationFaultsTest, LayingOutATimelineLosesNothing)
{
	FailEach([this] { Otio::TimelineInput(mFolder / "edit.otio").MakeSequence(); });
}

TEST_F(AllocationFaultsTest, RenderingWritesAllOrNothing)
{
	Otio::TimelineRenderRequest request;
	request.mInput = mFolder / "edit.otio";
	request.mOutput = mFolder / "mix.wav";
	WriteAllOrNothing(request.mOutput, [&request] { Otio::TimelineRenderJob(request).Run(); });
}

// On two threads, whose allocations come in any order.
TEST_F(AllocationFaultsTest, JoiningPiecesWritesAllOrNothing)
{
	Otio::TimelineRenderRequest request;
	request.mInput = mFolder / "edit.otio";
	request.mBlockFrames = 256;
	FarmPlan const plan = Otio::PlanFarm(Otio::TimelineRenderJob(request), request, {2, false, "sonaro", {}});
	ASSERT_EQ(plan.mPieces.size(), 2u);
	for (std::size_t const number : {std::size_t(1), std::size_t(2)})
	{
		Otio::TimelineRenderRequest piece = request;
		piece.mOutput = mFolder / (std::to_string(number) + ".piece");
		ASSERT_TRUE(Otio::TimelinePieceJob(piece, plan, number, "sonaro").Run());
	}
	request.mOutput = mFolder / "mix.wav";
	request.mJobs = 2;
	// Done before, as the library of JSON that makes a plan's text leaves blocks where it fails.
	request.mPieces = Otio::OpenPieces(plan, {mFolder / "1.piece", mFolder / "2.piece"});
	WriteAllOrNothing(request.mOutput,
		[&]
		{
			try
			{
				Otio::TimelineRenderJob(request).Run();
			}
			catch (HostError const&)
			{
				// Streams make an error in reading of it.
			}
		});
}

TEST_F(AllocationFaultsTest, MediaWithoutMemoryFailByTheirName)
{
	auto const source = AudioFileSource::Open(mFolder / "tone.wav");
	sLeftHere = 0;
	source->PrefetchAudioData(0, SN::TickTime(), 4800);
	sLeftHere = -1;
	ASSERT_TRUE(source->GetFailure());
	EXPECT_THAT(source->GetFailure()->what(),
		testing::AllOf(testing::HasSubstr("tone.wav"), testing::HasSubstr("not enough memory")));
}

// Threads without makers wait for the calling one, which has to come to its work whatever it could not allocate before.
TEST_F(AllocationFaultsTest, PiecesEndWithoutMemoryForThreads)
{
	constexpr std::size_t kPieces = 4;
	PiecePlan plan;
	plan.mJobs = 4;
	plan.mPieces = kPieces;
	plan.mPieceFrames = 16;
	OfflineRange const range{kPieces * 16, SN::FrameRate::FromSamplesPerSecond(48000), 1, 16};
	std::size_t taken = 0;
	RangeRender render;
	render.mTakePiece = [&taken](Piece&) { ++taken; };
	PieceMaker const make = [](std::size_t, std::atomic<bool> const&, Piece& outPiece)
	{ outPiece.BeginBlock(); };
	auto const lackMaker = []() -> PieceMaker { throw std::bad_alloc(); };
	for (std::int64_t skipped = 0; skipped < 60; ++skipped)
	{
		taken = 0;
		sLeftHere = skipped;
		try
		{
			RunPieces({}, render, range, plan, make, lackMaker);
		}
		catch (std::bad_alloc const&)
		{
			taken = kPieces;
		}
		sLeftHere = -1;
		ASSERT_EQ(taken, kPieces) << "after allocation " << skipped << " failed";
	}
}

// Media that fail while they are played, and one allocation of the render thread after that.
class MediaThatFail final : public GraphMedia
{
public:
	explicit MediaThatFail(std::int64_t inSkipped)
		: mSkipped(inSkipped)
	{
	}

	std::optional<HostError> FindFailure() const override
	{
		std::optional<HostError> failure(HostError(
			HostError::Kind::kInput, {"tone.wav", {}, "has become unreadable while it was played", {}}));
		sLeftHere = mSkipped;
		return failure;
	}
	std::vector<DamagedMedia> ListDamaged() const override { return {}; }

private:
	std::int64_t mSkipped;
};

TEST_F(AllocationFaultsTest, APlaybackThatFailsWithoutMemoryStopsWithAReason)
{
	Otio::TimelineInput input(mFolder / "edit.otio");
	Otio::TimelineSequence const sequence = input.MakeSequence();
	std::set<std::string> reasons;
	for (std::int64_t skipped = 0; skipped < 10; ++skipped)
	{
		Programme programme = Otio::MakeProgramme(sequence, input.GetMedia());
		programme.mOpenForGraph = [skipped] { return std::make_unique<MediaThatFail>(skipped); };
		Playback::NullDevice device(0.0);
		Playback::Playback playback(programme, device, {});
		playback.Play();
		ASSERT_TRUE(playback.WaitUntilFilled(std::chrono::seconds(60)));
		EXPECT_FALSE(playback.GetState().mIsPlaying);
		reasons.insert(playback.GetState().mFailure);
	}
	EXPECT_FALSE(reasons.contains(""));
	EXPECT_TRUE(reasons.contains("out of memory"));
	EXPECT_FALSE(reasons.contains("std::bad_alloc"));
	EXPECT_GT(reasons.size(), 1u) << "the last ones have enough of it";
}

} // namespace SonaroHost::Testing::AllocationFaultsTest
