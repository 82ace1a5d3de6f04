#pragma once

namespace zorvaccelerate::utility
{

// The levels of processors that kernels are compiled for. Each can run what is below it.
enum class ProcessorLevel
{
	kBaseline,
	// The processor has 256-bit vectors.
	kLevel3,
	// The processor has 512-bit vectors.
	kLevel4,
};

// The level of the processor that runs this, or the lower one of baseline, x86-64-v3 and x86-64-v4 that ZORV_PROCESSOR_LEVEL
// of the environment names: results are the same, and this is how that is tried. Callable at any time, also while static
// objects are made.
ProcessorLevel GetProcessorLevel();

} // namespace zorvaccelerate::utility
