// What must hold for every file that is accepted, and a file that has a fuzzer's bytes.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

inline void require(bool held, char const *what)
{
    if (!held) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}
