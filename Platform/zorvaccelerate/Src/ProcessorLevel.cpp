#include "ProcessorLevel.h"

namespace zorvaccelerate::utility
{

ProcessorLevel GetProcessorLevel()
{
#if defined(__x86_64__)
	__builtin_cpu_init();
	bool const level3 =
		__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi2");
	bool const level4 = level3 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
						__builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
						__builtin_cpu_supports("avx512cd");
	return level4 ? ProcessorLevel::kLevel4 : level3 ? ProcessorLevel::kLevel3 : ProcessorLevel::kBaseline;
#else
	return ProcessorLevel::kBaseline;
#endif
}

} // namespace zorvaccelerate::utility
