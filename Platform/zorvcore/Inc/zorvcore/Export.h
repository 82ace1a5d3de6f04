#pragma once

#include <bit>

// Marks what a library of the family offers beyond its own boundary; everything else is hidden. One
// macro serves all libraries, since exporting and importing are spelt alike where they are built.
#ifdef _WIN32
// The linker exports everything, and imports what it finds.
#define ZORV_API
#else
#define ZORV_API __attribute__((visibility("default")))
#endif

static_assert(std::endian::native == std::endian::little,
	"Sonaro's files and hashes are memory as it lies, with the lowest byte of a number first");
