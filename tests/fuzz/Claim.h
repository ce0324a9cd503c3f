#pragma once

#include <cstdio>
#include <cstdlib>

namespace orvo::fuzz
{

/// Ends the program, as a sanitizer would, when something that holds for every input does not hold
/// for this one.
inline void claim(bool holds, const char* what)
{
    if (!holds)
    {
        std::fprintf(stderr, "claim broken: %s\n", what);
        std::abort();
    }
}

} // namespace orvo::fuzz
