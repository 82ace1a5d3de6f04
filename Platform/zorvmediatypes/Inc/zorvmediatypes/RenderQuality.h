#pragma once

namespace zorvmediatypes
{

// How much work a render may spend on converting rates and time; the values in use are these five.
enum class RenderQuality
{
	kDraft = 1,
	kLow = 2,
	kMedium = 3,
	kHigh = 4,
	kMaximum = 5,
};

} // namespace zorvmediatypes
