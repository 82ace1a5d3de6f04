#pragma once

namespace zorvaccelerate::utility
{

// The levels of processors that kernels are compiled for. Each can run what is below it.
enum class ProcessorLevel
{
	kBaseline,
	// With 256-bit vectors.
	kLevel3,
	// With 512-bit vectors.
	kLevel4,
};

// Of the processor that runs this. Any time, also while static objects are made.
ProcessorLevel GetProcessorLevel();

} // namespace zorvaccelerate::utility
