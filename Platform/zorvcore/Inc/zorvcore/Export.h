#pragma once

// Marks what a library of the family offers beyond its own boundary; everything else is hidden. One
// macro serves all libraries, since exporting and importing are spelt alike where they are built.
#define ZORV_API __attribute__((visibility("default")))
