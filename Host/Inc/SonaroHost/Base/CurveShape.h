#pragma once

namespace SonaroHost
{

// How a curve goes from a point to the next one.
enum class Interpolation
{
	// The point's value up to the next point.
	kHold,
	// A straight line.
	kLinear,
	// Rounded, and never beyond the values of the two points.
	kSmooth,
};

// What the values of a curve's points are.
enum class AutomationScale
{
	// What the curve gives out.
	kLinear,
	// Decibels. The curve runs in decibels and gives out the linear gain.
	kDecibels,
};

} // namespace SonaroHost
