// A program loads a scene into memory that the system has not given it before. Called outside the timing of a round, so
// that the allocator does not keep the pages of one round for the next.
#pragma once

#include <malloc.h>

inline void give_memory_back() { malloc_trim(0); }
