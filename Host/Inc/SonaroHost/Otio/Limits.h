#pragma once

#include <cstddef>

namespace SonaroHost::Otio
{

// What a timeline file may contain at most; anything beyond is refused.

// Stacks and tracks within each other, the timeline's own stack among them.
inline constexpr std::size_t kMaxCompositionDepth = 256;
// Objects and arrays of JSON within each other.
inline constexpr std::size_t kMaxJsonDepth = 1000;
inline constexpr std::size_t kMaxFileBytes = std::size_t{1} << 30;
// Either side of 0, in seconds: three centuries.
inline constexpr double kMaxSeconds = 1.0e10;
inline constexpr double kMinRate = 1.0e-4;
inline constexpr double kMaxRate = 1.0e12;
inline constexpr double kMaxTimeScalar = 1000.0;

} // namespace SonaroHost::Otio
