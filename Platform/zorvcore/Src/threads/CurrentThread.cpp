#include "zorvcore/threads/CurrentThread.h"

#include <algorithm>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace zorvcore::threads
{

bool CurrentThreadIsMainThread() noexcept
{
	thread_local bool const sIsMainThread = gettid() == getpid();
	return sIsMainThread;
}

void SetCurrentThreadName(char const* inName) noexcept
{
	constexpr std::size_t kMaxLength = 15;
	char name[kMaxLength + 1] = {};
	std::string_view(inName).copy(name, kMaxLength);
	pthread_setname_np(pthread_self(), name);
}

void SetCurrentThreadPriority(ThreadPriority inPriority) noexcept
{
	constexpr int kNicePerStep = 5;
	constexpr int kLowestNice = -20;
	constexpr int kHighestNice = 19;
	// Here the system keeps nice values by thread; that of the process is its first thread's. A thread
	// inherits its maker's, which is therefore no base to start from.
	int const processNice = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
	int const steps = static_cast<int>(ThreadPriority::kNormal) - static_cast<int>(inPriority);
	int const nice = std::clamp(processNice + steps * kNicePerStep, kLowestNice, kHighestNice);
	auto const thread = static_cast<id_t>(gettid());
	if (setpriority(PRIO_PROCESS, thread, nice) != 0 && nice < processNice)
	{
		setpriority(PRIO_PROCESS, thread, processNice);
	}
}

bool SetCurrentThreadRealtime(int inPriority) noexcept
{
	rlimit limit{};
	getrlimit(RLIMIT_RTPRIO, &limit);
	int const most = limit.rlim_cur < rlim_t{99} ? static_cast<int>(limit.rlim_cur) : 99;
	// A privileged process may exceed its limit.
	sched_param const wanted{std::clamp(inPriority, 1, 99)};
	sched_param const allowed{std::clamp(inPriority, 1, std::max(most, 1))};
	constexpr int kPolicy = SCHED_RR | SCHED_RESET_ON_FORK;
	return sched_setscheduler(gettid(), kPolicy, &wanted) == 0 ||
		   sched_setscheduler(gettid(), kPolicy, &allowed) == 0;
}

} // namespace zorvcore::threads
