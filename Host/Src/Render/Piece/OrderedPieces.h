#pragma once

#include "Piece.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace SonaroHost
{

// Hands out the pieces of a programme to threads, and what they made of them to consumers, each of which gets all pieces in
// order, one at a time, on whichever thread is free. There is no thread that only waits for the others' work.
//
// Memory   At most the window's number of pieces are rendered or kept. Once what is kept exceeds the limit, nobody begins
//          another piece but the one that all wait for.
// Errors   The first one by position ends all: that of a piece is thrown by the first consumer when its turn comes.
// Threads  Any, but for the constructor and GetFailure.
class OrderedPieces
{
public:
	using Consumer = std::function<void(Piece&)>;
	// Renders the piece of an index.
	using Renderer = std::function<void(std::size_t, Piece&)>;

	struct Limits
	{
		// How many pieces there are.
		std::size_t mPieces = 0;
		std::size_t mWindow = 0;
		std::size_t mBytes = 0;
	};

	// inMakePiece: makes an empty one.
	OrderedPieces(Limits const& inLimits, std::function<std::unique_ptr<Piece>()> inMakePiece,
		std::vector<Consumer> inConsumers);

	// Works until there is nothing left to do. inRender: empty for a thread that only helps consumers.
	void Work(Renderer const& inRender);
	// Ends all as soon as possible.
	void End();
	// Not false any more once all is to end.
	std::atomic<bool> const& IsEnding() const { return mIsEnding; }
	// What ended it, once all threads have returned; null for nothing.
	std::exception_ptr GetFailure() const { return mFailure; }

private:
	using Lock = std::unique_lock<std::mutex>;

	struct Lane
	{
		Consumer mConsume;
		std::size_t mNext = 0;
		bool mIsBusy = false;
	};
	struct Slot
	{
		std::unique_ptr<Piece> mPiece;
		bool mIsReady = false;
		// Consumers that have not had it.
		std::size_t mLanesLeft = 0;
	};

	bool IsOver() const;
	// A consumer whose next piece is there; null for none.
	Lane* FindLane();
	bool MayRender() const;
	void Consume(Lane& ioLane, Lock& ioLock);
	void Render(Renderer const& inRender, Lock& ioLock);
	void Free();
	std::unique_ptr<Piece> TakePiece();
	std::size_t CountBytes() const;

	Limits mLimits;
	std::function<std::unique_ptr<Piece>()> mMakePiece;
	std::atomic<bool> mIsEnding{false};

	std::mutex mMutex;
	std::condition_variable mChanged;
	std::vector<Lane> mLanes;
	// The pieces from mFirst on that are rendered or kept.
	std::deque<Slot> mSlots;
	std::size_t mFirst = 0;
	// False once a piece has failed: those after it are not wanted.
	bool mGoesOn = true;
	std::vector<std::unique_ptr<Piece>> mFree;
	std::exception_ptr mFailure;
};

} // namespace SonaroHost
