#include "OrderedPieces.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

OrderedPieces::OrderedPieces(Limits const& inLimits, std::function<std::unique_ptr<Piece>()> inMakePiece,
	std::vector<Consumer> inConsumers)
	: mLimits(inLimits),
	  mMakePiece(std::move(inMakePiece))
{
	for (Consumer& consumer : inConsumers)
	{
		mLanes.push_back({std::move(consumer), 0, false});
	}
}

void OrderedPieces::Work(Renderer const& inRender)
{
	Lock lock(mMutex);
	while (!IsOver())
	{
		try
		{
			// What is finished goes first, which frees memory.
			if (Lane* const lane = FindLane())
			{
				Consume(*lane, lock);
			}
			else if (inRender && MayRender())
			{
				Render(inRender, lock);
			}
			else
			{
				mChanged.wait(lock);
			}
		}
		catch (...)
		{
			mFailure = mFailure ? mFailure : std::current_exception();
			mIsEnding = true;
			mChanged.notify_all();
		}
	}
}

void OrderedPieces::End()
{
	Lock const lock(mMutex);
	mIsEnding = true;
	mChanged.notify_all();
}

bool OrderedPieces::IsOver() const
{
	return mIsEnding || std::ranges::all_of(
							mLanes, [this](Lane const& inLane) { return inLane.mNext == mLimits.mPieces; });
}

// The first consumer has the output, which everything else is to keep up with.
OrderedPieces::Lane* OrderedPieces::FindLane()
{
	auto const canGoOn = [this](Lane const& inLane)
	{
		return !inLane.mIsBusy && inLane.mNext < mFirst + mSlots.size() &&
			   mSlots[inLane.mNext - mFirst].mIsReady;
	};
	Lane* found = nullptr;
	for (Lane& lane : mLanes)
	{
		if (canGoOn(lane) && (!found || lane.mNext < found->mNext))
		{
			found = &lane;
		}
	}
	return found;
}

bool OrderedPieces::MayRender() const
{
	bool const isLeft = mGoesOn && mFirst + mSlots.size() < mLimits.mPieces;
	return isLeft && (mSlots.empty() || (mSlots.size() < mLimits.mWindow && CountBytes() < mLimits.mBytes));
}

void OrderedPieces::Consume(Lane& ioLane, Lock& ioLock)
{
	Slot& slot = mSlots[ioLane.mNext - mFirst];
	Piece& piece = *slot.mPiece;
	ioLane.mIsBusy = true;
	ioLock.unlock();
	try
	{
		ioLane.mConsume(piece);
	}
	catch (...)
	{
		ioLock.lock();
		throw;
	}
	ioLock.lock();
	ioLane.mIsBusy = false;
	--mSlots[ioLane.mNext - mFirst].mLanesLeft;
	++ioLane.mNext;
	Free();
	mChanged.notify_all();
}

void OrderedPieces::Render(Renderer const& inRender, Lock& ioLock)
{
	std::size_t const index = mFirst + mSlots.size();
	mSlots.push_back({TakePiece(), false, mLanes.size()});
	Piece& piece = *mSlots.back().mPiece;
	ioLock.unlock();
	inRender(index, piece);
	ioLock.lock();
	mGoesOn = mGoesOn && !piece.mFailure;
	mSlots[index - mFirst].mIsReady = true;
	mChanged.notify_all();
}

void OrderedPieces::Free()
{
	while (!mSlots.empty() && mSlots.front().mIsReady && mSlots.front().mLanesLeft == 0)
	{
		mFree.push_back(std::move(mSlots.front().mPiece));
		mSlots.pop_front();
		++mFirst;
	}
}

std::unique_ptr<Piece> OrderedPieces::TakePiece()
{
	if (mFree.empty())
	{
		return mMakePiece();
	}
	auto piece = std::move(mFree.back());
	mFree.pop_back();
	piece->Clear();
	return piece;
}

std::size_t OrderedPieces::CountBytes() const
{
	std::size_t bytes = 0;
	for (Slot const& slot : mSlots)
	{
		bytes += slot.mIsReady ? slot.mPiece->CountBytes() : 0;
	}
	return bytes;
}

} // namespace SonaroHost
