#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process, which is a finding, unless `holds`.
inline void expect(bool holds, char const* what)
{
    if (!holds) {
        std::fprintf(stderr, "expected: %s\n", what);
        std::abort();
    }
}
