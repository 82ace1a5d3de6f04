#include "zorvcore/allocator/SmallBlockAllocator.h"

#include <mutex>
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

struct ThreadLists
{
	ThreadList mLists[kNumClasses] = {};
};

// Null before the first use in a thread and after the thread's lists were closed. A single pointer, so that
// it may lie in the part of thread memory that is reached without a call even in a library loaded late.
[[gnu::tls_model("initial-exec")]] constinit thread_local ThreadLists* sThreadLists = nullptr;
constinit thread_local bool sThreadListsClosed = false;

// Hands the blocks of a thread that ends to the shared store.
struct ThreadListsCloser
{
	~ThreadListsCloser()
	{
		sThreadListsClosed = true;
		ThreadLists* const lists = std::exchange(sThreadLists, nullptr);
		for (std::size_t i = 0; lists && i < kNumClasses; ++i)
		{
			for (Block* const batch : {lists->mLists[i].mActive, lists->mLists[i].mSpare})
			{
				if (batch)
				{
					sStores[i].Put(batch);
				}
			}
		}
		delete lists;
	}

	// The thread goes on without lists when there is no memory for them.
	void Open() { sThreadLists = new (std::nothrow) ThreadLists; }
};

thread_local ThreadListsCloser sThreadListsCloser;

[[gnu::noinline]] ThreadLists* OpenThreadLists()
{
	if (!sThreadListsClosed)
	{
		sThreadListsCloser.Open();
	}
	return sThreadLists;
}

// The calling thread's list of a size class, null when the thread has none.
ThreadList* GetThreadList(std::size_t inClass)
{
	ThreadLists* lists = sThreadLists;
	if (!lists) [[unlikely]]
	{
		lists = OpenThreadLists();
	}
	return lists ? &lists->mLists[inClass] : nullptr;
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

// Gives one block to a thread without lists; what comes with it goes back.
Block* AllocateUnlisted(std::size_t inClass)
{
	Block* const batch = TakeOrMakeBatch(inClass);
	if (batch->mNext)
	{
		sStores[inClass].Put(batch->mNext);
	}
	return batch;
}

[[gnu::noinline]] void Refill(ThreadList& ioList, std::size_t inClass)
{
	ioList.mActive = ioList.mSpare ? std::exchange(ioList.mSpare, nullptr) : TakeOrMakeBatch(inClass);
	ioList.mActiveCount = kBatchBlocks;
}

// Keeps a full list as the spare one, and hands on the spare one before it.
[[gnu::noinline]] void Spill(ThreadList& ioList, std::size_t inClass)
{
	if (ioList.mSpare)
	{
		sStores[inClass].Put(ioList.mSpare);
	}
	ioList.mSpare = std::exchange(ioList.mActive, nullptr);
	ioList.mActiveCount = 0;
}

} // namespace

void* SmallBlockAllocator::Allocate(std::size_t inSize)
{
	if (inSize > kLargestBlock)
	{
		return ::operator new(inSize);
	}
	std::size_t const sizeClass = ClassOf(inSize);
	ThreadList* const list = GetThreadList(sizeClass);
	if (!list) [[unlikely]]
	{
		return AllocateUnlisted(sizeClass);
	}
	if (!list->mActive) [[unlikely]]
	{
		Refill(*list, sizeClass);
	}
	Block* const block = list->mActive;
	list->mActive = block->mNext;
	--list->mActiveCount;
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
	ThreadList* const list = GetThreadList(sizeClass);
	if (!list) [[unlikely]]
	{
		sStores[sizeClass].Put(::new (inBlock) Block{nullptr, nullptr});
		return;
	}
	list->mActive = ::new (inBlock) Block{list->mActive, nullptr};
	if (++list->mActiveCount >= kBatchBlocks) [[unlikely]]
	{
		Spill(*list, sizeClass);
	}
}

#endif

} // namespace zorvcore::allocator
