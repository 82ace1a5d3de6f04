#pragma once

// Stands in front of the definition of a constant object that hosts may use before main: in a static build, too, it
// is made before theirs.
#define ZORV_EARLY [[gnu::init_priority(200)]]
