#include "Support/Common.h"
#include "Support/Threads.h"
#include "zorvcore/allocator/MemoryRecycler.h"
#include "zorvcore/allocator/SmallBlockAllocator.h"

#include <list>

namespace AllocatorTest
{

using namespace zorvcore::allocator;

// A block filled with a mark of its own, which shows whether somebody else was given the same memory.
class MarkedBlock
{
public:
	MarkedBlock(std::size_t inSize, unsigned char inMark)
		: mSize(inSize),
		  mMark(inMark),
		  mData(static_cast<unsigned char*>(SmallBlockAllocator::Allocate(inSize)))
	{
		std::memset(mData, mMark, mSize);
	}

	void DisposeChecked()
	{
		EXPECT_EQ(reinterpret_cast<std::uintptr_t>(mData) % SmallBlockAllocator::kAlignment, 0u);
		std::size_t intact = 0;
		while (intact < mSize && mData[intact] == mMark)
		{
			++intact;
		}
		EXPECT_EQ(intact, mSize);
		SmallBlockAllocator::Dispose(mData, mSize);
	}

private:
	std::size_t mSize;
	unsigned char mMark;
	unsigned char* mData;
};

TEST(SmallBlockAllocator, LiveBlocksNeverOverlap)
{
	std::vector<MarkedBlock> blocks;
	unsigned char mark = 0;
	for (int round = 0; round < 3; ++round)
	{
		for (std::size_t size = 0; size <= SmallBlockAllocator::kLargestBlock + 20; ++size)
		{
			for (int i = 0; i < 5; ++i)
			{
				blocks.emplace_back(size, ++mark);
			}
		}
		for (MarkedBlock& block : blocks)
		{
			block.DisposeChecked();
		}
		blocks.clear();
	}
}

// Threads swap blocks through a common pool, so that most blocks end on another thread than they began on.
TEST(SmallBlockAllocator, BlocksMayEndOnOtherThreads)
{
	constexpr int kThreads = 4;
	constexpr int kSteps = 20000;
	std::mutex mutex;
	std::vector<MarkedBlock> pool;
	auto const work = [&](unsigned inSeed)
	{
		std::minstd_rand random(inSeed + 1);
		for (int i = 0; i < kSteps; ++i)
		{
			MarkedBlock block(random() % 300, static_cast<unsigned char>(random()));
			std::lock_guard const lock(mutex);
			if (pool.size() < 500)
			{
				pool.push_back(block);
			}
			else
			{
				std::swap(pool[random() % pool.size()], block);
				block.DisposeChecked();
			}
		}
	};
	SN::Testing::RunOnThreads(kThreads, work);
	for (MarkedBlock& block : pool)
	{
		block.DisposeChecked();
	}
}

TEST(SmallBlockAllocator, ServesDestructorsOfThreadLocals)
{
	struct Late
	{
		~Late()
		{
			std::vector<MarkedBlock> blocks;
			for (unsigned char i = 0; i < 100; ++i)
			{
				blocks.emplace_back(48, i);
			}
			for (MarkedBlock& block : blocks)
			{
				block.DisposeChecked();
			}
		}

		int mTouched = 0;
	};
	SN::Testing::RunOnThreads(3,
		[](unsigned)
		{
			// Made before the thread's first block, and so destroyed after the thread's lists.
			thread_local Late sLate;
			++sLate.mTouched;
			MarkedBlock(48, 7).DisposeChecked();
		});
}

TEST(SmallBlockAllocator, AskingForTooMuchThrows)
{
	// Beyond any address space, and hidden from the compiler, which would warn of it.
	std::size_t volatile count = std::numeric_limits<std::size_t>::max() / 4;
	EXPECT_THROW(static_cast<void>(SmallBlockSTLAllocator<double>().allocate(count)), std::bad_alloc);
	EXPECT_THROW(static_cast<void>(STLAllocator<double>().allocate(count)), std::bad_alloc);
}

TEST(SmallBlockSTLAllocator, KeepsLargeAlignments)
{
	struct alignas(64) Wide
	{
		unsigned char mBytes[64];
	};
	std::list<Wide, SmallBlockSTLAllocator<Wide>> list(10);
	Vector<Wide> vector(10);
	for (Wide const& wide : list)
	{
		EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&wide) % 64, 0u);
	}
	EXPECT_EQ(reinterpret_cast<std::uintptr_t>(vector.data()) % 64, 0u);
}

TEST(MemoryRecycler, TheActualSizeMayBeUsedWholeAndEitherSizeRecycles)
{
	for (std::size_t size = 0; size < 600; ++size)
	{
		std::size_t actualSize = 0;
		void* const first = MemoryRecycler::Allocate(size, actualSize);
		ASSERT_GE(actualSize, size);
		std::memset(first, 0x5A, actualSize);
		void* const second = MemoryRecycler::Allocate(size, actualSize);
		std::memset(second, 0xA5, actualSize);
		EXPECT_EQ(*static_cast<unsigned char*>(first), 0x5A);
		MemoryRecycler::Recycle(first, size);
		MemoryRecycler::Recycle(second, actualSize);
	}
}

} // namespace AllocatorTest
