#pragma once

#include "ProcessorLevel.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace zorvaccelerate::utility
{

// Which of the variants of a set of kernels is in use: the plainest one for static objects that are made
// before this library's own, and from Choose on the best that the processor runs.
template <class Variant, std::size_t kCount>
class VariantChoice
{
public:
	// inVariants: sorted by ProcessorLevel; they outlive the choice.
	constexpr explicit VariantChoice(Variant const* const (&inVariants)[kCount])
		: mVariants(inVariants),
		  mInUse(inVariants[0])
	{
	}

	// The value is of no interest: it lets a static object do the choosing.
	bool Choose()
	{
		mInUse = mVariants[CountRunnable() - 1];
		return true;
	}

	Variant const* operator->() const { return mInUse; }

	std::vector<Variant> GetRunnable() const
	{
		std::vector<Variant> runnable;
		runnable.reserve(CountRunnable());
		for (std::size_t level = 0; level < CountRunnable(); ++level)
		{
			runnable.push_back(*mVariants[level]);
		}
		return runnable;
	}

private:
	static std::size_t CountRunnable()
	{
		return std::min(kCount, static_cast<std::size_t>(GetProcessorLevel()) + 1);
	}

	Variant const* const (&mVariants)[kCount];
	Variant const* mInUse;
};

} // namespace zorvaccelerate::utility
