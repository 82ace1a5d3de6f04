// Fails one allocation of a program, and counts what it does not free; Scripts/try-allocations.py builds it and loads it
// in front of the C library. It counts from the start of main on: what fails before has no handler.
//
// SONARO_FAIL_AT    which allocation fails, from 1 on; 0 for none
// SONARO_FAIL_KIND  "new" for those by operator new; "all" for those of C as well, where libraries that end the process
//                   when there is no memory are passed over
// SONARO_FAIL_LOG   the file that gets, at the end, one line: how many allocations there were, how many blocks of operator
//                   new were never freed (-1 where the program ended at once), and "failed", "passed over" or "none"; and where the failure was

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

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

std::atomic<bool> sCounts{false};
std::atomic<std::uint64_t> sAllocations{0};
// More than are freed, since all are counted from the start of the process on.
std::atomic<std::int64_t> sLiveNews{0};
std::atomic<int> sState{0};
std::uint64_t sFailAt = 0;
bool sCountsAll = false;
void* sFrames[kMostFrames];
int sNumFrames = 0;

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

// Whether this allocation is the one.
bool Fails()
{
	thread_local bool tIsInside = false;
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
	sCounts = true;
	return sMain(inCount, inArguments, inEnvironment);
}

} // namespace

// Runs after the static objects of the program are gone.
__attribute__((destructor)) static void WriteLogAtEnd()
{
	sCounts = false;
	WriteLog(sLiveNews);
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
