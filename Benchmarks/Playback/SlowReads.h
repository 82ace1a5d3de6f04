#pragma once

#include <cstdint>

// A disk that is as slow as one likes: this program's read stands in front of that of the C library, for the libraries
// that decode sound, too. Threads: any.
namespace SonaroBenchmarks::SlowReads
{

// In bytes a second, for all files together; 0 for as fast as it goes.
void SetBandwidth(double inBytesPerSecond);
// Bytes that were read of files so far.
std::int64_t CountBytes();

} // namespace SonaroBenchmarks::SlowReads
