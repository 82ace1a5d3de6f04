#include "GraphPool.h"

#include "Render/Effect/LatencyGrowth.h"
#include "Render/Piece/PieceRenderer.h"
#include "Render/RangeRequest.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Engine/OfflineRender.h"
#include "SonaroHost/Serve/TooBusyError.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

namespace SonaroHost::Serve
{

namespace
{

// That of a render unless somebody asks for another.
constexpr unsigned kServedBlockFrames = 4096;
// A graph that was not used for so long has hardly a client who goes on where it stands.
constexpr auto kIdleTime = std::chrono::seconds(2);
// Choices of tracks whose failures are remembered.
constexpr std::size_t kMostFailures = 64;

RangeRender MakeRender(Programme const& inProgramme, LeftOut const& inLeftOut, unsigned inBlockFrames)
{
	RangeRender render;
	render.mRange = {0, inProgramme.mFrames};
	render.mBlockFrames = inBlockFrames;
	render.mView.mLeftOut = inLeftOut;
	return render;
}

OfflineRange MakeServedRange(Programme const& inProgramme)
{
	OfflineRange range{inProgramme.mFrames, inProgramme.GetFrameRate(),
		static_cast<unsigned>(inProgramme.GetLayout().size()), ChooseBlock(inProgramme, kServedBlockFrames)};
	range.mFirstFrame = inProgramme.mFirstFrame;
	return range;
}

} // namespace

// A graph and the block that it rendered last. Blocks are those of a render from the start, since the signs of zeros can
// depend on where a block begins.
class GraphPool::Slot
{
public:
	Slot(Programme const& inProgramme, std::mutex& ioMaking)
		: mProgramme(inProgramme),
		  mMaking(ioMaking),
		  mRange(MakeServedRange(inProgramme)),
		  mPiece(mRange.mChannels, mRange.mBlockFrames, 0)
	{
	}

	// Throws a HostError when the graph cannot be made.
	void MakeGraph(LeftOut const& inLeftOut)
	{
		std::lock_guard const lock(mMaking);
		mRenderer.reset();
		mBlock.reset();
		mLeftOut = inLeftOut;
		mRender = MakeRender(mProgramme, inLeftOut, mRange.mBlockFrames);
		mRenderer.emplace(mProgramme, mRender, mRange);
		mIsNew = true;
	}
	// Whether the graph can render these tracks from there on. One that remembers more than a start settles cannot: its
	// effects would go on with the sound of another place, of which not every plugin is rid when it is activated again.
	bool CanRender(LeftOut const& inLeftOut, std::int64_t inFirstFrame) const
	{
		return mRenderer && mLeftOut == inLeftOut &&
			   (mIsNew || GoesOnAt(inFirstFrame) || GetReport().mWhyInOneRun.empty());
	}
	// An effect that has stopped working would stay so.
	void DropGraph()
	{
		std::lock_guard const lock(mMaking);
		mRenderer.reset();
		mBlock.reset();
	}
	// The first frame of the block that was begun last.
	std::int64_t GetLastPlace() const { return mLastBlock * mRange.mBlockFrames; }

	Sequence::GraphReport const& GetReport() const { return mRenderer->GetReport(); }
	bool GoesOnAt(std::int64_t inFrame) const
	{
		std::int64_t const block = inFrame / mRange.mBlockFrames;
		return mBlock && (block == *mBlock || block == *mBlock + 1);
	}
	void Render(ProgrammeRange const& inRange, std::int64_t inWarmUpFrames, Clock::time_point inDeadline,
		Sink const& inSink)
	{
		std::int64_t const end = inRange.mFirstFrame + inRange.mFrames;
		if (!GoesOnAt(inRange.mFirstFrame) && !GetReport().mWhyInOneRun.empty())
		{
			WarmUp(inRange.mFirstFrame, inWarmUpFrames, inDeadline);
		}
		for (std::int64_t first = inRange.mFirstFrame; first < end;)
		{
			std::int64_t const block = first / mRange.mBlockFrames;
			if (mBlock != block)
			{
				RenderBlock(block, inDeadline);
			}
			first += HandOn(first - block * mRange.mBlockFrames, end - first, inSink);
		}
	}

	LeftOut mLeftOut;
	bool mIsBusy = true;
	Clock::time_point mLastUse;

private:
	void WarmUp(std::int64_t inFirstFrame, std::int64_t inWarmUpFrames, Clock::time_point inDeadline)
	{
		std::int64_t const end = inFirstFrame / mRange.mBlockFrames;
		std::int64_t block = std::max<std::int64_t>(0, inFirstFrame - inWarmUpFrames) / mRange.mBlockFrames;
		for (; block < end; ++block)
		{
			RenderBlock(block, inDeadline);
		}
	}

	// Where the latency of an effect grows, another graph, which makes up for it, renders again what the run began with.
	void RenderBlock(std::int64_t inBlock, Clock::time_point inDeadline)
	{
		mRunStart = mBlock && inBlock == *mBlock + 1 ? mRunStart : inBlock;
		std::int64_t first = inBlock;
		for (int growths = 0;;)
		{
			try
			{
				for (std::int64_t block = first; block <= inBlock; ++block)
				{
					RenderOnce(block, inDeadline);
				}
				return;
			}
			catch (LatencyGrowth const&)
			{
				first = mRunStart;
				if (++growths > 1)
				{
					FindLargestLatency(inDeadline);
				}
				MakeGraph(mLeftOut);
			}
		}
	}

	// Of the programme from the start of the run on, or of as much as half of the time allows.
	void FindLargestLatency(Clock::time_point inDeadline)
	{
		auto const now = Clock::now();
		auto const end = now + (inDeadline - now) / 2;
		MakeGraph(mLeftOut);
		mProgramme.mSearchesLatency = true;
		try
		{
			for (std::int64_t block = mRunStart;
				 block * mRange.mBlockFrames < mRange.mFrames && Clock::now() < end; ++block)
			{
				RenderOnce(block, inDeadline);
			}
		}
		catch (HostError const&)
		{
			// Whoever asks for that place hears of it.
		}
		mProgramme.mSearchesLatency = false;
	}

	void RenderOnce(std::int64_t inBlock, Clock::time_point inDeadline)
	{
		if (Clock::now() > inDeadline)
		{
			throw TooBusyError("rendering takes too long; try again later");
		}
		std::atomic<bool> const isEnding{false};
		std::int64_t const first = inBlock * mRange.mBlockFrames;
		mBlock.reset();
		mLastBlock = inBlock;
		mIsNew = false;
		mPiece.Clear();
		mRenderer->Render(
			first, std::min<std::int64_t>(mRange.mBlockFrames, mRange.mFrames - first), isEnding, mPiece);
		if (mPiece.mFailure)
		{
			std::rethrow_exception(mPiece.mFailure);
		}
		mBlock = inBlock;
	}

	// Up to inMost frames of the block from inOffset on; returns how many.
	std::int64_t HandOn(std::int64_t inOffset, std::int64_t inMost, Sink const& inSink)
	{
		std::int64_t count = 0;
		mPiece.TakeBlocks(
			[&](dsp::AudioBuffer& ioBlock)
			{
				dsp::AudioSubBuffer part;
				part.Init(ioBlock.GetNumChannels());
				part.Assign(ioBlock, static_cast<unsigned>(inOffset));
				count = std::min<std::int64_t>(inMost, part.GetUseSize());
				part.SetUseSize(static_cast<unsigned>(count));
				inSink(part);
			});
		return count;
	}

	Programme mProgramme;
	std::mutex& mMaking;
	OfflineRange mRange;
	RangeRender mRender;
	Piece mPiece;
	std::optional<PieceRenderer> mRenderer;
	// Whether it has rendered nothing.
	bool mIsNew = true;
	// The number of the block that the piece holds.
	std::optional<std::int64_t> mBlock;
	// From where on blocks were rendered without a gap, and the one that was begun last.
	std::int64_t mRunStart = 0;
	std::int64_t mLastBlock = 0;
};

// A slot as long as it is used.
class GraphPool::Loan
{
public:
	Loan(GraphPool& ioPool, LeftOut const& inLeftOut, std::int64_t inFirstFrame, Clock::time_point inDeadline)
		: mPool(ioPool),
		  mSlot(ioPool.Borrow(inLeftOut, inFirstFrame, inDeadline))
	{
		try
		{
			if (!mSlot.CanRender(inLeftOut, inFirstFrame))
			{
				mSlot.MakeGraph(inLeftOut);
			}
		}
		catch (...)
		{
			mPool.GiveBack(mSlot);
			throw;
		}
	}
	~Loan() { mPool.GiveBack(mSlot); }
	Loan(Loan const&) = delete;
	Loan& operator=(Loan const&) = delete;

	Slot* operator->() { return &mSlot; }

private:
	GraphPool& mPool;
	Slot& mSlot;
};

GraphPool::GraphPool(Programme inProgramme, Limits const& inLimits)
	: mProgramme(std::move(inProgramme)),
	  mLimits(inLimits)
{
}

GraphPool::~GraphPool() = default;

std::string GraphPool::FindWhyInOneRun(LeftOut const& inLeftOut, Clock::time_point inDeadline)
{
	return Loan(*this, inLeftOut, 0, inDeadline)->GetReport().mWhyInOneRun;
}

void GraphPool::Render(
	LeftOut const& inLeftOut, ProgrammeRange const& inRange, Clock::time_point inDeadline, Sink const& inSink)
{
	Loan slot(*this, inLeftOut, inRange.mFirstFrame, inDeadline);
	try
	{
		slot->Render(inRange, mLimits.mWarmUpFrames, inDeadline, inSink);
	}
	catch (HostError const& error)
	{
		slot->DropGraph();
		NoteFailure(inLeftOut, {slot->GetLastPlace(), error});
		throw;
	}
}

void GraphPool::NoteFailure(LeftOut const& inLeftOut, Failure const& inFailure)
{
	std::lock_guard const lock(mMutex);
	if (mFailures.size() >= kMostFailures)
	{
		mFailures.clear();
	}
	mFailures.try_emplace(inLeftOut, inFailure);
	mProblem = mProblem.empty() ? inFailure.mError.what() : mProblem;
}

void GraphPool::CheckRange(LeftOut const& inLeftOut, ProgrammeRange const& inRange) const
{
	std::lock_guard const lock(mMutex);
	auto const found = mFailures.find(inLeftOut);
	if (found != mFailures.end() && found->second.mFrame >= inRange.mFirstFrame &&
		found->second.mFrame - inRange.mFirstFrame < inRange.mFrames)
	{
		throw found->second.mError;
	}
}

std::string GraphPool::GetProblem() const
{
	std::lock_guard const lock(mMutex);
	return mProblem;
}

GraphPool::Slot& GraphPool::Borrow(
	LeftOut const& inLeftOut, std::int64_t inFirstFrame, Clock::time_point inDeadline)
{
	std::unique_lock lock(mMutex);
	Slot* slot = FindFree(inLeftOut, inFirstFrame);
	while (!slot)
	{
		if (mGivenBack.wait_until(lock, inDeadline) == std::cv_status::timeout)
		{
			throw TooBusyError("too many others are being served; try again later");
		}
		slot = FindFree(inLeftOut, inFirstFrame);
	}
	slot->mIsBusy = true;
	return *slot;
}

GraphPool::Slot* GraphPool::FindFree(LeftOut const& inLeftOut, std::int64_t inFirstFrame)
{
	for (auto const& slot : mSlots)
	{
		if (!slot->mIsBusy && slot->mLeftOut == inLeftOut && slot->GoesOnAt(inFirstFrame))
		{
			return slot.get();
		}
	}
	Slot* const oldest = FindOldest(&inLeftOut);
	bool const isIdle = oldest && Clock::now() - oldest->mLastUse > kIdleTime;
	if (!isIdle && mSlots.size() < mLimits.mMostGraphs)
	{
		return mSlots.emplace_back(std::make_unique<Slot>(mProgramme, mMaking)).get();
	}
	return oldest ? oldest : FindOldest(nullptr);
}

GraphPool::Slot* GraphPool::FindOldest(LeftOut const* inLeftOut) const
{
	Slot* oldest = nullptr;
	for (auto const& slot : mSlots)
	{
		bool const fits = !slot->mIsBusy && (!inLeftOut || slot->mLeftOut == *inLeftOut);
		if (fits && (!oldest || slot->mLastUse < oldest->mLastUse))
		{
			oldest = slot.get();
		}
	}
	return oldest;
}

void GraphPool::GiveBack(Slot& ioSlot)
{
	std::lock_guard const lock(mMutex);
	ioSlot.mIsBusy = false;
	ioSlot.mLastUse = Clock::now();
	mGivenBack.notify_all();
}

} // namespace SonaroHost::Serve
