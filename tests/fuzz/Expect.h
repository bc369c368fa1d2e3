#pragma once

#include <cstdlib>
#include <iostream>

/// Ends a run of the fuzzer as a finding unless a condition holds.
#define EXPECT(condition)                                                                                    \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::cerr << __FILE__ << ':' << __LINE__ << ": not so: " #condition << std::endl;                \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)
