#include "zorvcore/utility/RunGuarded.h"

#include "Support/Common.h"

#include <array>
#include <cfenv>
#include <cstdlib>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace RunGuardedTest
{

using namespace zorvcore::utility::exceptions;

void ReadNothing()
{
	int const volatile* volatile const place = nullptr;
	static_cast<void>(*place);
}

void DivideByZero()
{
	int volatile zero = 0;
	int volatile const result = 7 / zero;
	static_cast<void>(result);
}

void RunNonsense()
{
	__builtin_trap();
}

#ifndef _WIN32

// A page of a file that has none.
void ReadBeyondTheFile()
{
	std::FILE* const file = std::tmpfile();
	auto const* const mapped =
		static_cast<char const volatile*>(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fileno(file), 0));
	std::fclose(file);
	static_cast<void>(*mapped);
}

#endif

struct Fault
{
	unsigned mCode;
	void (*mCause)();
};
#ifdef _WIN32
constexpr unsigned kAccessFault = EXCEPTION_ACCESS_VIOLATION;
constexpr unsigned kDivisionFault = EXCEPTION_INT_DIVIDE_BY_ZERO;
constexpr unsigned kInstructionFault = EXCEPTION_ILLEGAL_INSTRUCTION;
#else
constexpr unsigned kAccessFault = SIGSEGV;
constexpr unsigned kDivisionFault = SIGFPE;
#ifdef __aarch64__
constexpr unsigned kInstructionFault = SIGTRAP;
#else
constexpr unsigned kInstructionFault = SIGILL;
#endif
#endif
constexpr Fault kFaults[] = {
	{kAccessFault, &ReadNothing},
	{kInstructionFault, &RunNonsense},
#ifndef _WIN32
	{SIGBUS, &ReadBeyondTheFile},
#endif
// Other processors give a number for it.
#ifdef __x86_64__
	{kDivisionFault, &DivideByZero},
#endif
};

// A second time as well: nothing is left blocked, and nothing is used up.
TEST(RunGuarded, SurvivesEveryFaultEveryTime)
{
	for (int time = 0; time < 3; ++time)
	{
		for (Fault const& fault : kFaults)
		{
			EXPECT_EQ(RunGuarded(fault.mCause), fault.mCode);
			EXPECT_EQ(RunGuarded([] {}), kNoMachineException);
		}
	}
}

TEST(RunGuarded, ThreadsFaultApart)
{
	auto const fault = [](Fault const& inFault)
	{
		for (int i = 0; i < 300; ++i)
		{
			EXPECT_EQ(RunGuarded(inFault.mCause), inFault.mCode);
		}
	};
	std::thread first(fault, kFaults[0]);
	std::thread second(fault, kFaults[1]);
	first.join();
	second.join();
}

TEST(RunGuarded, TheInnermostGuardEnds)
{
	std::vector<int> trace;
	unsigned const outer = RunGuarded(
		[&]
		{
			EXPECT_EQ(RunGuarded(&ReadNothing), kAccessFault);
			EXPECT_THROW(RunGuarded([] { throw std::runtime_error("C++"); }), std::runtime_error);
			trace.push_back(1);
			RunNonsense();
			trace.push_back(2);
		});
	EXPECT_EQ(outer, kInstructionFault);
	EXPECT_THAT(trace, testing::ElementsAre(1));
}

TEST(RunGuarded, TheFloatingPointModeIsAsItWas)
{
	std::fesetround(FE_UPWARD);
	EXPECT_EQ(RunGuarded(
				  []
				  {
					  std::fesetround(FE_DOWNWARD);
					  ReadNothing();
				  }),
		kAccessFault);
	EXPECT_EQ(std::fegetround(), FE_UPWARD);
	std::fesetround(FE_TONEAREST);
}

#ifndef _WIN32

TEST(RunGuarded, TheSignalMaskIsAsItWas)
{
	sigset_t blocked;
	sigemptyset(&blocked);
	sigaddset(&blocked, SIGUSR1);
	pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
	EXPECT_EQ(RunGuarded(&ReadNothing), kAccessFault);
	sigset_t mask;
	pthread_sigmask(SIG_UNBLOCK, &blocked, &mask);
	EXPECT_TRUE(sigismember(&mask, SIGUSR1));
	EXPECT_FALSE(sigismember(&mask, SIGSEGV));
}

int Overflow(int inDepth)
{
	std::array<int volatile, 16384> room;
	room[0] = inDepth;
	return inDepth == -1 ? 0 : Overflow(inDepth + 1) + room[0];
}

TEST(RunGuarded, SurvivesAnOverflowOnAnAlternateStack)
{
	std::thread overflowing(
		[]
		{
			std::vector<char> memory(1 << 18);
			stack_t const alternate{memory.data(), 0, memory.size()};
			stack_t former;
			ASSERT_EQ(sigaltstack(&alternate, &former), 0);
			for (int time = 0; time < 2; ++time)
			{
				EXPECT_EQ(RunGuarded([] { Overflow(0); }), kAccessFault);
			}
			sigaltstack(&former, nullptr);
		});
	overflowing.join();
}

// What the former handler of a child has to say.
void ReportSignal(int, siginfo_t* inInfo, void*)
{
	std::fprintf(stderr, "%s\n", inInfo->si_code > 0 ? "former: fault" : "former: sent");
	if (inInfo->si_code > 0)
	{
		_exit(3);
	}
}

void ReportPlainSignal(int)
{
	std::fprintf(stderr, "former: plain\n");
}

void SetFormer(void (*inHandler)(int), unsigned inFlags = 0)
{
	struct sigaction action = {};
	action.sa_handler = inHandler;
	action.sa_flags = static_cast<int>(inFlags);
	sigaction(SIGSEGV, &action, nullptr);
}

void SetReportingFormer()
{
	struct sigaction action = {};
	action.sa_sigaction = &ReportSignal;
	action.sa_flags = SA_SIGINFO;
	sigaction(SIGSEGV, &action, nullptr);
}

#endif

// Children start from the beginning, so that no guard is installed before theirs.
class RunGuardedDeathTest : public testing::Test
{
protected:
	RunGuardedDeathTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

#ifndef _WIN32

TEST_F(RunGuardedDeathTest, WhatIsNoGuardsGoesToTheFormerHandler)
{
	EXPECT_EXIT(
		{
			SetReportingFormer();
			if (RunGuarded([] { raise(SIGSEGV); }) == kNoMachineException &&
				RunGuarded(&ReadNothing) == kAccessFault)
			{
				ReadNothing();
			}
		},
		testing::ExitedWithCode(3), "^former: sent\nformer: fault\n$");
	EXPECT_EXIT(
		{
			// It counts on being called once.
			SetFormer(&ReportPlainSignal, SA_RESETHAND);
			InstallGuards();
			ReadNothing();
		},
		testing::KilledBySignal(SIGSEGV), "^former: plain\n$");
	EXPECT_EXIT(
		{
			SetFormer(SIG_IGN);
			InstallGuards();
			ReadNothing();
		},
		testing::KilledBySignal(SIGSEGV), "^$");
}

#endif

// A sanitizer's handler of accesses is a former one, too.
#ifdef __has_feature
constexpr bool kIsSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kIsSanitized = false;
#endif
constexpr char const* kReport = kIsSanitized ? "Sanitizer" : "";

TEST_F(RunGuardedDeathTest, AFaultOutsideEveryGuardEndsTheProgram)
{
	for (Fault const& fault : kFaults)
	{
		EXPECT_DEATH(
			{
				RunGuarded(fault.mCause);
				fault.mCause();
			},
			"");
	}
	EXPECT_DEATH(
		{
			try
			{
				RunGuarded([] { throw std::runtime_error("C++"); });
			}
			catch (std::runtime_error const&)
			{
				ReadNothing();
			}
		},
		kReport);
	EXPECT_DEATH(
		{
			RunGuarded(&ReadNothing);
			std::thread(&ReadNothing).join();
		},
		kReport);
}

} // namespace RunGuardedTest
