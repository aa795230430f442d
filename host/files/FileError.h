#pragma once

#include <stdexcept>
#include <string>

/// Why a file cannot be read or written. The text is the reason alone, without the file's name.
class FileError : public std::runtime_error {
public:
    enum class Fault {
        Request,      ///< the name leads nowhere, or to something that is no ordinary file
        Surroundings, ///< the disk is full, a permission is missing: may work another time
    };

    FileError(Fault whose, std::string const& reason) : std::runtime_error(reason), fault(whose) {}

    /// For an error number of the system.
    explicit FileError(int systemError);

    Fault getFault() const { return fault; }

private:
    Fault fault;
};

/// The reason behind an error number of the system, as part of a sentence.
std::string describeSystemError(int error);
