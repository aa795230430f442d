// How exceptions become an exit status and one line.

#include "session/Failures.h"

#include "files/PrintableText.h"
#include "runtime/loader/ToolLoader.h"
#include "runtime/values/HostValue.h"
#include "shots/ShotError.h"

#include <exception>

namespace {

Failure makeFailure(ExitStatus status, std::string const& text)
{
    return {static_cast<int>(status), makePrintable(text)};
}

Failure describeInterruption(Interrupted const& interruption)
{
    return {static_cast<int>(ExitStatus::SignalReceived) + interruption.signal,
            "stopped by signal " + std::to_string(interruption.signal) + "; " +
                interruption.outcome};
}

} // namespace

Failure describeCurrentFailure()
{
    try {
        throw;
    } catch (Interrupted const& interruption) {
        return describeInterruption(interruption);
    } catch (UsageError const& error) {
        return makeFailure(ExitStatus::WrongRequest, error.what());
    } catch (ValueError const& error) {
        return makeFailure(ExitStatus::WrongRequest, error.what());
    } catch (SurroundingsError const& error) {
        return makeFailure(ExitStatus::Surroundings, error.what());
    } catch (ToolLoadError const& error) {
        return makeFailure(ExitStatus::Surroundings, error.what());
    } catch (...) {
        FrameFailure const failure = describeFailure(std::current_exception());
        return {toExitStatus(failure.kind), makePrintable(failure.text)};
    }
}

std::string quote(std::string const& text)
{
    return "\"" + text + "\"";
}
