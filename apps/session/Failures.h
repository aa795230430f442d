#pragma once

#include <stdexcept>
#include <string>

/// What the program tells its caller.
enum class ExitStatus : int {
    Done = 0,
    PictureFailed = 1,   ///< pictures are missing, damaged or unsupported; or a fault of our own
    WrongRequest = 2,    ///< the command line is wrong; nothing was written
    Surroundings = 3,    ///< disk, permission, memory, installation: may work another time
    SignalReceived = 128 ///< plus the signal's number
};

/// The command line asks for something that cannot be. The text says what, where and what to do.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Something around the program failed, such as standard output.
class SurroundingsError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A signal asked for the end, and everything has been cleaned up.
struct Interrupted {
    int signal;
    std::string outcome = "nothing was written";
};

/// A failure as the user sees it.
struct Failure {
    int status;       ///< of the process
    std::string text; ///< one line without the program's name
};

/// The failure behind the exception that is being handled.
Failure describeCurrentFailure();

/// `text` between double quotes.
std::string quote(std::string const& text);
