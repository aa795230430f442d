#pragma once

#include <source_location>

/// How the host and its plug-ins report broken invariants. Any thread may call these.
class Assertions {
public:
    /// Throws AssertionFailure for `expression`, which stands at `line` of `file` (a source path
    /// without extension).
    [[noreturn]] static void throwAssertionFailed(char const* file, int line,
                                                  char const* expression);

    /// Throws ProgramAbort. `expression` may be null when there is none to show.
    [[noreturn]] static void throwProgramAborted(char const* file, int line,
                                                 char const* expression);

    /// Throws AssertionFailure with the caller's place unless `holds`.
    static void check(bool holds, char const* expression,
                      std::source_location const& where = std::source_location::current());
};
