#pragma once

#include <stdexcept>
#include <string>

/// A module of the program is missing or cannot be loaded. The text is the reason alone.
class ModuleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Loads a part of the program that is only needed now and then, because its libraries would cost
/// every start more than the program itself does; gives the function of that name in it. Looked for
/// beside the code of this library and beside the program, there and in the library folder next to
/// it. The module lives until the process ends. Throws ModuleError.
void* loadModuleFunction(std::string const& fileName, char const* function);
