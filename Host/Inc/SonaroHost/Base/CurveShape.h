#pragma once

namespace SonaroHost
{

// How a curve goes from a point to the next one.
enum class Interpolation
{
	// The point's value up to the next point.
	eHold,
	// A straight line.
	eLinear,
	// Rounded, and never beyond the values of the two points.
	eSmooth,
};

// What the values of a curve's points are.
enum class AutomationScale
{
	// What the curve gives out.
	eLinear,
	// Decibels. The curve runs in decibels and gives out the linear gain.
	eDecibels,
};

} // namespace SonaroHost
