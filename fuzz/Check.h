#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process, which the fuzzer takes as a finding, when the condition is false.
#define FUZZ_CHECK(condition)                                                                   \
    do {                                                                                        \
        if (!(condition)) {                                                                     \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                       \
        }                                                                                       \
    } while (false)
