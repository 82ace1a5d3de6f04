#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace SonaroHost
{

// A state that the host replaces while render threads read it: readers neither wait, lock, allocate nor
// free.
//
// Step  Who     What                                        Order
// R1    reader  mReaders + 1                                seq_cst
// R2    reader  loads mCurrent                              seq_cst
// R3    reader  reads the state
// R4    reader  mReaders - 1                                release
// W1    writer  exchanges mCurrent, keeps the old state     seq_cst
// W2    writer  loads mReaders                              seq_cst
// W3    writer  at 0, frees all old states
//
// A reader whose R1 comes after W2 in the one order of all seq_cst operations finds at R2 what W1 has put
// there or something newer. One whose R1 comes before W2 has left with R4 when W2 reads 0, and what it read
// at R3 happened before W3. So an old state is freed only when nobody can see it. While W2 finds readers,
// old states wait for a later edit or for the destructor: two words and their contents for each edit.
//
// Threads  Read: any number at once. The rest: the host's, one after the other by a lock of their own. The
//          destructor: when nobody reads any more.
template <class T>
class PublishedState
{
public:
	explicit PublishedState(std::unique_ptr<T const> inState)
		: mOwned(std::move(inState)),
		  mCurrent(mOwned.get())
	{
	}
	PublishedState(PublishedState const&) = delete;
	PublishedState& operator=(PublishedState const&) = delete;

	// Holds on to the state that was current when it was made. Short-lived, on one thread.
	class Reader
	{
	public:
		explicit Reader(PublishedState const& inPublished)
			: mPublished(inPublished)
		{
			mPublished.mReaders.fetch_add(1, std::memory_order_seq_cst);
			mState = mPublished.mCurrent.load(std::memory_order_seq_cst);
		}
		~Reader() { mPublished.mReaders.fetch_sub(1, std::memory_order_release); }
		Reader(Reader const&) = delete;
		Reader& operator=(Reader const&) = delete;

		T const* operator->() const { return mState; }
		T const& operator*() const { return *mState; }

	private:
		PublishedState const& mPublished;
		T const* mState;
	};

	// Publishes what inEdit makes of the current state: a std::unique_ptr<T const> from a T const&. Nothing
	// changes when it throws.
	template <class Edit>
	void Replace(Edit&& inEdit)
	{
		std::lock_guard const lock(mWriting);
		std::unique_ptr<T const> next = inEdit(*mOwned);
		mOld.push_back(nullptr);
		mCurrent.exchange(next.get(), std::memory_order_seq_cst);
		mOld.back() = std::exchange(mOwned, std::move(next));
		if (mReaders.load(std::memory_order_seq_cst) == 0)
		{
			mOld.clear();
		}
	}

private:
	std::mutex mWriting;
	std::unique_ptr<T const> mOwned;
	std::vector<std::unique_ptr<T const>> mOld;
	std::atomic<T const*> mCurrent;
	mutable std::atomic<unsigned> mReaders{0};
};

} // namespace SonaroHost
