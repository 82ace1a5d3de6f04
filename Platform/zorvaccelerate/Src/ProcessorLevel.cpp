#include "ProcessorLevel.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace zorvaccelerate::utility
{

#if defined(__x86_64__)

namespace
{

ProcessorLevel FindLevel()
{
	__builtin_cpu_init();
	bool const level3 =
		__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi2");
	bool const level4 = level3 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
						__builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
						__builtin_cpu_supports("avx512cd");
	return level4 ? ProcessorLevel::kLevel4 : level3 ? ProcessorLevel::kLevel3 : ProcessorLevel::kBaseline;
}

ProcessorLevel GetAllowedLevel()
{
	char const* const text = std::getenv("ZORV_PROCESSOR_LEVEL");
	std::string_view const name = text ? text : "";
	return name == "baseline"    ? ProcessorLevel::kBaseline
		   : name == "x86-64-v3" ? ProcessorLevel::kLevel3
								 : ProcessorLevel::kLevel4;
}

} // namespace

ProcessorLevel GetProcessorLevel()
{
	return std::min(FindLevel(), GetAllowedLevel());
}

#else

ProcessorLevel GetProcessorLevel()
{
	return ProcessorLevel::kBaseline;
}

#endif

} // namespace zorvaccelerate::utility
