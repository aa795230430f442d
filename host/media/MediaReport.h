#pragma once

#include <functional>
#include <string>

/// What is told while a picture is read and written, one line each, on the thread that asked. None
/// of it stops anything.
struct MediaReport {
    using Line = std::function<void(std::string const&)>;

    /// The file says the same in another way than one might expect: other bits, other windows.
    Line note = [](std::string const&) {};
    /// Something of the source is missing from the file.
    Line warn = [](std::string const&) {};
};
