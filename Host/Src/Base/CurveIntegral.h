#pragma once

#include "SonaroHost/Base/SpeedKey.h"

#include <boost/multiprecision/cpp_int.hpp>

#include <vector>

namespace SonaroHost
{

// A fraction of any length.
using Exact = boost::multiprecision::cpp_rational;

Exact ToExact(Ratio const& inRatio);
// The nearest Ratio: exact where it fits in, otherwise a multiple of 2^-44 or of a coarser power of two.
Ratio RoundToRatio(Exact const& inNumber);

// The position at each of a curve's keys, from time 0 on.
std::vector<Exact> IntegrateToKeys(std::vector<SpeedKey> const& inKeys);
// The position at a time, from time 0 on.
Exact Integrate(std::vector<SpeedKey> const& inKeys, Ratio const& inTime);

} // namespace SonaroHost
