// Fails one allocation of a program, and counts what it does not free; Scripts/try-allocations.py builds it and loads it
// in front of the C library. It counts from the start of main on: what fails before has no handler.
//
// SONARO_FAIL_AT    which allocation fails, from 1 on; 0 for none
// SONARO_FAIL_KIND  "new" for those by operator new; "all" for those of C as well, where libraries that end the process
//                   when there is no memory are passed over
// SONARO_FAIL_LOG   the file that gets, at the end, one line: how many allocations there were, how many blocks of operator
//                   new were never freed (-1 where the program ended at once), and "failed", "passed over" or "none"; and where the failure was.
//                   A crash adds a line "crashed", and where it was
// SONARO_LIVE_LOG   the file that gets, at the end, the places where the blocks of operator new were taken that were never
//                   freed: a line for each frame from the innermost one on, and an empty one after each block

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sched.h>

extern "C"
{
	void* __libc_malloc(std::size_t);
	void* __libc_calloc(std::size_t, std::size_t);
	void* __libc_realloc(void*, std::size_t);
	void* __libc_memalign(std::size_t, std::size_t);
	void __libc_free(void*);
}

namespace
{

constexpr int kMostFrames = 48;
// Of the place where a block was taken.
constexpr int kMostLiveFrames = 16;
constexpr std::size_t kMostLiveBlocks = std::size_t{1} << 18;

std::atomic<bool> sCounts{false};
std::atomic<std::uint64_t> sAllocations{0};
// More than are freed, since all are counted from the start of the process on.
std::atomic<std::int64_t> sLiveNews{0};
std::atomic<int> sState{0};
std::uint64_t sFailAt = 0;
bool sCountsAll = false;
void* sFrames[kMostFrames];
int sNumFrames = 0;

struct LiveBlock
{
	void* mBlock = nullptr;
	int mNumFrames = 0;
	void* mFrames[kMostLiveFrames];
};

// By addresses; blocks beyond its room are left out.
LiveBlock sLiveBlocks[kMostLiveBlocks];
std::atomic_flag sLiveLock = ATOMIC_FLAG_INIT;
bool sListsLive = false;

class LiveLock
{
public:
	LiveLock()
	{
		while (sLiveLock.test_and_set(std::memory_order_acquire))
		{
			::sched_yield();
		}
	}
	~LiveLock() { sLiveLock.clear(std::memory_order_release); }
};

// Marks a place that was in use, after which others may follow.
void* GetFreed()
{
	return sLiveBlocks;
}

LiveBlock* FindLive(void* inBlock, bool inAdds)
{
	constexpr std::uintptr_t kSpread = 0x9e3779b97f4a7c15u;
	std::size_t const first = (reinterpret_cast<std::uintptr_t>(inBlock) * kSpread) >> 40;
	for (std::size_t i = 0; i < kMostLiveBlocks; ++i)
	{
		LiveBlock& live = sLiveBlocks[(first + i) % kMostLiveBlocks];
		if (live.mBlock == inBlock || (inAdds && (!live.mBlock || live.mBlock == GetFreed())))
		{
			return &live;
		}
		if (!live.mBlock)
		{
			return nullptr;
		}
	}
	return nullptr;
}

void NoteLive(void* inBlock)
{
	if (!sListsLive || !inBlock)
	{
		return;
	}
	void* frames[kMostLiveFrames];
	int const count = ::backtrace(frames, kMostLiveFrames);
	LiveLock const lock;
	if (LiveBlock* const live = FindLive(inBlock, true))
	{
		live->mBlock = inBlock;
		live->mNumFrames = count;
		std::memcpy(live->mFrames, frames, sizeof frames);
	}
}

void ForgetLive(void* inBlock)
{
	if (!sListsLive || !inBlock)
	{
		return;
	}
	LiveLock const lock;
	if (LiveBlock* const live = FindLive(inBlock, false))
	{
		live->mBlock = GetFreed();
	}
}

// The linker of the system, and libraries that call abort or exit by themselves or go on without the memory: libsndfile
// writes headers into none, and libFLAC takes it for the end of a file.
constexpr char const* kEndingLibraries[] = {"ld-linux", "libsndfile", "libFLAC", "libglib-", "libgobject-",
	"libgio-", "libgvc.", "libcgraph.", "libgvplugin", "libcdt.", "libpathplan.", "libpango", "libharfbuzz",
	"libfontconfig", "liblilv", "libserd", "libsord", "libsratom", "libzix", "libjack", "libasound",
	"libpulse", "libdb-", "libncurses", "libtinfo", "libx264", "libx265"};

bool IsOfEndingLibrary()
{
	for (int i = 0; i < sNumFrames; ++i)
	{
		Dl_info info{};
		if (::dladdr(sFrames[i], &info) == 0 || !info.dli_fname)
		{
			continue;
		}
		for (char const* const name : kEndingLibraries)
		{
			if (std::strstr(info.dli_fname, name))
			{
				return true;
			}
		}
	}
	return false;
}

// inBlocks: how many were never freed; below 0 while the program runs.
void WriteLog(std::int64_t inBlocks)
{
	char const* const path = std::getenv("SONARO_FAIL_LOG");
	int const file = path ? ::open(path, O_WRONLY | O_CREAT | O_TRUNC, 0644) : -1;
	if (file < 0)
	{
		return;
	}
	char line[128];
	constexpr char const* kStates[] = {"none", "failed", "passed over"};
	int const length = std::snprintf(line, sizeof line, "%llu %lld %s\n",
		static_cast<unsigned long long>(sAllocations.load()), static_cast<long long>(inBlocks),
		kStates[sState]);
	if (::write(file, line, static_cast<std::size_t>(length)) == length)
	{
		::backtrace_symbols_fd(sFrames, sNumFrames, file);
	}
	::close(file);
}

void ListLive()
{
	char const* const path = std::getenv("SONARO_LIVE_LOG");
	int const file = path && sListsLive ? ::open(path, O_WRONLY | O_CREAT | O_TRUNC, 0644) : -1;
	for (LiveBlock const& live : sLiveBlocks)
	{
		if (file < 0)
		{
			return;
		}
		if (live.mBlock && live.mBlock != GetFreed())
		{
			::backtrace_symbols_fd(live.mFrames, live.mNumFrames, file);
			[[maybe_unused]] auto const written = ::write(file, "\n", 1);
		}
	}
	::close(file);
}

void EndByCrash(int inSignal)
{
	void* frames[kMostFrames];
	int const count = ::backtrace(frames, kMostFrames);
	char const* const path = std::getenv("SONARO_FAIL_LOG");
	int const file = path ? ::open(path, O_WRONLY | O_CREAT | O_APPEND, 0644) : -1;
	constexpr char kCrashed[] = "crashed\n";
	if (file >= 0 && ::write(file, kCrashed, sizeof kCrashed - 1) > 0)
	{
		::backtrace_symbols_fd(frames, count, file);
	}
	std::signal(inSignal, SIG_DFL);
	std::raise(inSignal);
}

// On a stack of its own, as that of the main thread may be used up.
void WatchForCrashes()
{
	static char sStack[65536];
	stack_t stack = {};
	stack.ss_sp = sStack;
	stack.ss_size = sizeof sStack;
	::sigaltstack(&stack, nullptr);
	struct sigaction action = {};
	action.sa_handler = &EndByCrash;
	action.sa_flags = SA_ONSTACK;
	for (int const signal : {SIGSEGV, SIGBUS, SIGABRT})
	{
		::sigaction(signal, &action, nullptr);
	}
}

// Whether this allocation is the one.
bool Fails()
{
	// In the room that each thread has from its start: making more would allocate, and so lead here again.
	__attribute__((tls_model("initial-exec"))) thread_local bool tIsInside = false;
	if (!sCounts || tIsInside || ++sAllocations != sFailAt)
	{
		return false;
	}
	tIsInside = true;
	sNumFrames = ::backtrace(sFrames, kMostFrames);
	bool const isPassedOver = IsOfEndingLibrary();
	sState = isPassedOver ? 2 : 1;
	// There may be no other time for it.
	WriteLog(-1);
	tIsInside = false;
	return !isPassedOver;
}

void* NewOrNull(std::size_t inSize, std::size_t inAlignment)
{
	if (Fails())
	{
		return nullptr;
	}
	void* const block = inAlignment > alignof(std::max_align_t) ? __libc_memalign(inAlignment, inSize)
																: __libc_malloc(inSize == 0 ? 1 : inSize);
	sLiveNews += block ? 1 : 0;
	NoteLive(block);
	return block;
}

void* New(std::size_t inSize, std::size_t inAlignment = 0)
{
	void* const block = NewOrNull(inSize, inAlignment);
	if (!block)
	{
		throw std::bad_alloc();
	}
	return block;
}

void Delete(void* inBlock)
{
	sLiveNews -= inBlock ? 1 : 0;
	ForgetLive(inBlock);
	__libc_free(inBlock);
}

bool FailsInC()
{
	bool const fails = sCountsAll && Fails();
	errno = fails ? ENOMEM : errno;
	return fails;
}

using Main = int (*)(int, char**, char**);
Main sMain = nullptr;

int CountedMain(int inCount, char** inArguments, char** inEnvironment)
{
	char const* const at = std::getenv("SONARO_FAIL_AT");
	char const* const kind = std::getenv("SONARO_FAIL_KIND");
	sFailAt = at ? std::strtoull(at, nullptr, 10) : 0;
	sCountsAll = kind && std::strcmp(kind, "all") == 0;
	// The first call loads a library.
	::backtrace(sFrames, kMostFrames);
	sNumFrames = 0;
	sListsLive = std::getenv("SONARO_LIVE_LOG") != nullptr;
	WatchForCrashes();
	sCounts = true;
	return sMain(inCount, inArguments, inEnvironment);
}

} // namespace

// Runs after the static objects of the program are gone.
__attribute__((destructor)) static void WriteLogAtEnd()
{
	sCounts = false;
	WriteLog(sLiveNews);
	ListLive();
}

extern "C"
{
	int __libc_start_main(Main inMain, int inCount, char** inArguments, void (*inInit)(), void (*inEnd)(),
		void (*inLinkerEnd)(), void* inStack)
	{
		using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
		auto const start = reinterpret_cast<Start>(::dlsym(RTLD_NEXT, "__libc_start_main"));
		sMain = inMain;
		return start(&CountedMain, inCount, inArguments, inInit, inEnd, inLinkerEnd, inStack);
	}

	void* malloc(std::size_t inSize)
	{
		return FailsInC() ? nullptr : __libc_malloc(inSize);
	}

	void* calloc(std::size_t inCount, std::size_t inSize)
	{
		return FailsInC() ? nullptr : __libc_calloc(inCount, inSize);
	}

	void* realloc(void* inBlock, std::size_t inSize)
	{
		return FailsInC() ? nullptr : __libc_realloc(inBlock, inSize);
	}

	void* memalign(std::size_t inAlignment, std::size_t inSize)
	{
		return FailsInC() ? nullptr : __libc_memalign(inAlignment, inSize);
	}

	void* aligned_alloc(std::size_t inAlignment, std::size_t inSize)
	{
		return FailsInC() ? nullptr : __libc_memalign(inAlignment, inSize);
	}

	int posix_memalign(void** outBlock, std::size_t inAlignment, std::size_t inSize)
	{
		*outBlock = FailsInC() ? nullptr : __libc_memalign(inAlignment, inSize);
		return *outBlock ? 0 : ENOMEM;
	}
}

// In the place of the program's own stores of small blocks, which keep what they once had. So each block can fail, and
// those that are not given back show.
namespace zorvcore::allocator
{

class SmallBlockAllocator
{
public:
	static void* Allocate(std::size_t inSize);
	static void Dispose(void* inBlock, std::size_t inSize) noexcept;
};

class MemoryRecycler
{
public:
	static void* Allocate(std::size_t inSize, std::size_t& outActualSize);
	static void Recycle(void* inBlock, std::size_t inSize) noexcept;
};

void* SmallBlockAllocator::Allocate(std::size_t inSize)
{
	return New(inSize);
}

void SmallBlockAllocator::Dispose(void* inBlock, std::size_t) noexcept
{
	Delete(inBlock);
}

void* MemoryRecycler::Allocate(std::size_t inSize, std::size_t& outActualSize)
{
	constexpr std::size_t kAlignment = 16;
	std::size_t const count = (inSize == 0 ? 1 : inSize) / kAlignment + 1;
	outActualSize = inSize > SIZE_MAX - kAlignment ? inSize : count * kAlignment;
	return New(outActualSize);
}

void MemoryRecycler::Recycle(void* inBlock, std::size_t) noexcept
{
	Delete(inBlock);
}

} // namespace zorvcore::allocator

void* operator new(std::size_t inSize)
{
	return New(inSize);
}

void* operator new[](std::size_t inSize)
{
	return New(inSize);
}

void* operator new(std::size_t inSize, std::align_val_t inAlignment)
{
	return New(inSize, static_cast<std::size_t>(inAlignment));
}

void* operator new[](std::size_t inSize, std::align_val_t inAlignment)
{
	return New(inSize, static_cast<std::size_t>(inAlignment));
}

void* operator new(std::size_t inSize, std::nothrow_t const&) noexcept
{
	return NewOrNull(inSize, 0);
}

void* operator new[](std::size_t inSize, std::nothrow_t const&) noexcept
{
	return NewOrNull(inSize, 0);
}

void* operator new(std::size_t inSize, std::align_val_t inAlignment, std::nothrow_t const&) noexcept
{
	return NewOrNull(inSize, static_cast<std::size_t>(inAlignment));
}

void* operator new[](std::size_t inSize, std::align_val_t inAlignment, std::nothrow_t const&) noexcept
{
	return NewOrNull(inSize, static_cast<std::size_t>(inAlignment));
}

void operator delete(void* inBlock) noexcept
{
	Delete(inBlock);
}

void operator delete[](void* inBlock) noexcept
{
	Delete(inBlock);
}

void operator delete(void* inBlock, std::size_t) noexcept
{
	Delete(inBlock);
}

void operator delete[](void* inBlock, std::size_t) noexcept
{
	Delete(inBlock);
}

void operator delete(void* inBlock, std::align_val_t) noexcept
{
	Delete(inBlock);
}

void operator delete[](void* inBlock, std::align_val_t) noexcept
{
	Delete(inBlock);
}

void operator delete(void* inBlock, std::size_t, std::align_val_t) noexcept
{
	Delete(inBlock);
}

void operator delete[](void* inBlock, std::size_t, std::align_val_t) noexcept
{
	Delete(inBlock);
}
