#pragma once

#include <dlfcn.h>

// The module is loaded with a scope of its own, in which its names come before those of the
// libraries that it needs: a function of it with the name of a library's is what OpenImageIO calls.
// Where a process has OpenImageIO from its start, OpenImageIO calls the libraries' own.

/// The library's own function of a name that this module has as well.
template <typename Function>
Function findNext(char const* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}
