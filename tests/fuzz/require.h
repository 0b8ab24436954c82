#pragma once

#include <cstdlib>

/// The fuzzer takes an abort for a find and keeps the input.
inline void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}
