#include "zorvcore/allocator/SmallBlockAllocator.h"

#include <mutex>
#include <type_traits>
#include <utility>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZORV_SMALL_BLOCKS_FROM_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define ZORV_SMALL_BLOCKS_FROM_HEAP 1
#endif
#endif
#ifndef ZORV_SMALL_BLOCKS_FROM_HEAP
#define ZORV_SMALL_BLOCKS_FROM_HEAP 0
#endif

namespace zorvcore::allocator
{

#if ZORV_SMALL_BLOCKS_FROM_HEAP

void* SmallBlockAllocator::Allocate(std::size_t inSize)
{
	return ::operator new(inSize);
}

void SmallBlockAllocator::Dispose(void* inBlock, std::size_t) noexcept
{
	::operator delete(inBlock);
}

#else

namespace
{

constexpr std::size_t kNumClasses = SmallBlockAllocator::kLargestBlock / SmallBlockAllocator::kAlignment;

// Blocks that a thread and the shared store trade at once.
constexpr unsigned kBatchBlocks = 32;

// A free block. mNextBatch is used in the first block of a batch that lies in the shared store.
struct Block
{
	Block* mNext;
	Block* mNextBatch;
};
static_assert(sizeof(Block) <= SmallBlockAllocator::kAlignment);

// The batches that no thread holds, one store for each size class. Never destroyed.
class Store
{
public:
	void Put(Block* inBatch)
	{
		std::lock_guard const lock(mMutex);
		inBatch->mNextBatch = mBatches;
		mBatches = inBatch;
	}

	// Null when the store is empty.
	Block* Take()
	{
		std::lock_guard const lock(mMutex);
		Block* const batch = mBatches;
		if (batch)
		{
			mBatches = batch->mNextBatch;
		}
		return batch;
	}

private:
	std::mutex mMutex;
	Block* mBatches = nullptr;
};

constinit Store sStores[kNumClasses];

// The blocks of one size class that one thread holds. A batch from a thread that has ended may be
// short; the count then runs high, and the list is only handed on a little earlier.
struct ThreadList
{
	Block* mActive;
	Block* mSpare;
	unsigned mActiveCount;
};

// Kept free of constructors and destructors, so that it serves until the very end of its thread.
struct ThreadLists
{
	enum class State
	{
		kNew,
		kOpen,
		kClosed
	};

	ThreadList mLists[kNumClasses];
	State mState;
};
static_assert(std::is_trivially_destructible_v<ThreadLists>);

constinit thread_local ThreadLists sThreadLists{};

// Hands the blocks of a thread that ends to the shared store.
struct ThreadListsCloser
{
	~ThreadListsCloser()
	{
		sThreadLists.mState = ThreadLists::State::kClosed;
		for (std::size_t i = 0; i < kNumClasses; ++i)
		{
			ThreadList& list = sThreadLists.mLists[i];
			for (Block* const batch :
				{std::exchange(list.mActive, nullptr), std::exchange(list.mSpare, nullptr)})
			{
				if (batch)
				{
					sStores[i].Put(batch);
				}
			}
		}
	}

	void Arm() {}
};

thread_local ThreadListsCloser sThreadListsCloser;

// Whether the calling thread may use its lists.
bool EnterThreadLists()
{
	if (sThreadLists.mState == ThreadLists::State::kNew) [[unlikely]]
	{
		sThreadListsCloser.Arm();
		sThreadLists.mState = ThreadLists::State::kOpen;
	}
	return sThreadLists.mState == ThreadLists::State::kOpen;
}

constexpr std::size_t ClassOf(std::size_t inSize)
{
	return inSize == 0 ? 0 : (inSize - 1) / SmallBlockAllocator::kAlignment;
}

Block* MakeBatch(std::size_t inClass)
{
	std::size_t const blockSize = (inClass + 1) * SmallBlockAllocator::kAlignment;
	auto* const memory = static_cast<std::byte*>(::operator new(blockSize* kBatchBlocks));
	Block* next = nullptr;
	for (unsigned i = kBatchBlocks; i-- > 0;)
	{
		next = ::new (memory + i * blockSize) Block{next, nullptr};
	}
	return next;
}

Block* TakeOrMakeBatch(std::size_t inClass)
{
	Block* const batch = sStores[inClass].Take();
	return batch ? batch : MakeBatch(inClass);
}

// For a thread whose lists are closed: one block, what comes with it goes back.
Block* AllocateUnlisted(std::size_t inClass)
{
	Block* const batch = TakeOrMakeBatch(inClass);
	if (batch->mNext)
	{
		sStores[inClass].Put(batch->mNext);
	}
	return batch;
}

} // namespace

void* SmallBlockAllocator::Allocate(std::size_t inSize)
{
	if (inSize > kLargestBlock)
	{
		return ::operator new(inSize);
	}
	std::size_t const sizeClass = ClassOf(inSize);
	if (!EnterThreadLists()) [[unlikely]]
	{
		return AllocateUnlisted(sizeClass);
	}
	ThreadList& list = sThreadLists.mLists[sizeClass];
	if (!list.mActive) [[unlikely]]
	{
		list.mActive = list.mSpare ? std::exchange(list.mSpare, nullptr) : TakeOrMakeBatch(sizeClass);
		list.mActiveCount = kBatchBlocks;
	}
	Block* const block = list.mActive;
	list.mActive = block->mNext;
	list.mActiveCount = list.mActive ? list.mActiveCount - 1 : 0;
	return block;
}

void SmallBlockAllocator::Dispose(void* inBlock, std::size_t inSize) noexcept
{
	if (!inBlock)
	{
		return;
	}
	if (inSize > kLargestBlock)
	{
		::operator delete(inBlock);
		return;
	}
	std::size_t const sizeClass = ClassOf(inSize);
	if (!EnterThreadLists()) [[unlikely]]
	{
		sStores[sizeClass].Put(::new (inBlock) Block{nullptr, nullptr});
		return;
	}
	ThreadList& list = sThreadLists.mLists[sizeClass];
	list.mActive = ::new (inBlock) Block{list.mActive, nullptr};
	if (++list.mActiveCount >= kBatchBlocks)
	{
		if (list.mSpare)
		{
			sStores[sizeClass].Put(list.mSpare);
		}
		list.mSpare = std::exchange(list.mActive, nullptr);
		list.mActiveCount = 0;
	}
}

#endif

} // namespace zorvcore::allocator
