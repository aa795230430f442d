// The host's failures: how their texts are put together.

#include "base/Assertions.h"

#include "base/HostException.h"

#include <string>
#include <utility>

namespace {

std::string describeFailure(std::string const& file, int line, std::string const& expression)
{
    std::string text = expression.empty() ? "Program aborted" : "Assertion failed: " + expression;
    return text + " (" + file + ", line " + std::to_string(line) + ")";
}

std::string withoutExtension(std::string path)
{
    auto const dot = path.rfind('.');
    auto const slash = path.find_last_of("/\\");
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) {
        path.resize(dot);
    }
    return path;
}

} // namespace

AssertionFailure::AssertionFailure(std::string sourceFile, int sourceLine,
                                   std::string failedExpression)
    : HostException(describeFailure(sourceFile, sourceLine, failedExpression)),
      file(std::move(sourceFile)), line(sourceLine), expression(std::move(failedExpression))
{
}

void Assertions::throwAssertionFailed(char const* file, int line, char const* expression)
{
    throw AssertionFailure(file, line, expression);
}

void Assertions::throwProgramAborted(char const* file, int line, char const* expression)
{
    throw ProgramAbort(file, line, expression == nullptr ? "" : expression);
}

void Assertions::check(bool holds, char const* expression, std::source_location const& where)
{
    if (!holds) {
        throw AssertionFailure(withoutExtension(where.file_name()), static_cast<int>(where.line()),
                               expression);
    }
}
