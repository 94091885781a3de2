// Runs a program within limits and takes what it prints: the walls around foreign parsers.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"

#include <cstdint>

struct PROCESS_LIMITS {
    std::uint64_t memory = std::uint64_t(4) << 30;  // bytes of address space; not held in sanitizer builds, which need
                                                    // terabytes of it
    unsigned seconds = 120;                         // of processor time, and of time on the clock
};

struct PROCESS_RESULT {
    enum ENDING {
        ENDED,        // by itself, with `code`
        KILLED,       // by the signal `code`
        OUT_OF_TIME,  // stopped by us or by the system
        NOT_STARTED,  // `code` is the system's error number
    };
    ENDING ending = NOT_STARTED;
    int code = 0;
    KN::String output;  // of standard output, at most 4 MiB; what it prints on standard error is dropped
};

// The program's own path, for programs that run themselves again; empty if the system does not tell.
KN::String own_program();

// `command`: the program's path, then its arguments. Returns when the program has ended; whatever it started in its own
// process group ends with it.
PROCESS_RESULT run_limited(KN_STD::VECTOR<KN::String> const &command, PROCESS_LIMITS const &limits);
