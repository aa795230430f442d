#pragma once

#include <stdexcept>
#include <string>

/// Root of everything the host throws on purpose. The text is one sentence for a log; the
/// applications turn it into one for their user.
class HostException : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A broken invariant: the failed expression and where it stands.
class AssertionFailure : public HostException {
public:
    AssertionFailure(std::string sourceFile, int sourceLine, std::string failedExpression);

    /// Source path without extension, as the failing code gave it.
    std::string const& getFile() const { return file; }
    int getLine() const { return line; }
    std::string const& getExpression() const { return expression; }

private:
    std::string file;
    int line;
    std::string expression;
};

/// A state that no input can bring about, such as an enumerator outside its enumeration.
class ProgramAbort : public AssertionFailure {
public:
    using AssertionFailure::AssertionFailure;
};

/// An empty handle was used. The text names the type that was expected behind it.
class NullPointerException : public HostException {
public:
    using HostException::HostException;
};

/// A host object is not of the kind that was asked for. The text names both types.
class CastFailedException : public HostException {
public:
    using HostException::HostException;
};
