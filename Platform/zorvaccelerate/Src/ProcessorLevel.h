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

// The level of the processor that runs this. Callable at any time, also while static objects are made.
ProcessorLevel GetProcessorLevel();

} // namespace zorvaccelerate::utility
