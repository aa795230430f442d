// remapcolor: the command line of Remap Color.

#include "files/StandardFiles.h"
#include "remapcolor/commands/CheckCommand.h"
#include "remapcolor/commands/CompletionCommand.h"
#include "remapcolor/commands/DescribeCommand.h"
#include "remapcolor/commands/InfoCommand.h"
#include "remapcolor/commands/LutCommand.h"
#include "remapcolor/commands/PickCommand.h"
#include "remapcolor/commands/PlotCommand.h"
#include "remapcolor/commands/RenderCommand.h"
#include "remapcolor/options/CommandLine.h"
#include "remapcolor/reports/Reporter.h"
#include "remapcolor/reports/StandardStreams.h"
#include "remapcolor/session/StandardInput.h"
#include "remapcolor/session/StopSignals.h"
#include "session/Failures.h"
#include "session/FreedMemory.h"

#include <cstdlib>
#include <exception>
#include <variant>

namespace {

constexpr int done = static_cast<int>(ExitStatus::Done);

/// Does what the command line asks for; gives the exit status.
struct Execution {
    Reporter& reporter;

    int operator()(PrintRequest const& request) const
    {
        writeStandardOutput(request.text);
        return done;
    }
    int operator()(CompletionRequest const& request) const
    {
        runCompletion(request);
        return done;
    }
    int operator()(DescribeRequest const& request) const
    {
        runDescribe(request);
        return done;
    }
    int operator()(CheckRequest const& request) const { return runCheck(request, reporter); }
    int operator()(InfoRequest const& request) const { return runInfo(request, reporter); }
    int operator()(LutRequest const& request) const
    {
        reporter.configure(ProgressStyle::Auto, request.verbosity);
        runLut(request, reporter);
        return done;
    }
    int operator()(PickRequest const& request) const
    {
        runPick(request, reporter);
        return done;
    }
    int operator()(PlotRequest const& request) const
    {
        reporter.configure(ProgressStyle::Auto, request.verbosity);
        runPlot(request, reporter);
        return done;
    }
    int operator()(ProjectRequest const& request) const
    {
        runProject(request, reporter);
        return done;
    }
    int operator()(RenderRequest const& request) const
    {
        reporter.configure(request.progress, request.verbosity);
        return runRender(request, reporter);
    }
};

/// Where a failure meets code that cannot fail, such as a library's destructor: out of memory, more
/// often than not. One line and the right status all the same.
[[noreturn]] void endAtOnce()
{
    std::set_terminate(&std::abort); // for a failure on the way
    if (std::current_exception() == nullptr) {
        std::abort();
    }
    Failure const failure = describeCurrentFailure();
    Reporter().reportFailure(failure);
    std::_Exit(failure.status);
}

} // namespace

int main(int nbArguments, char** arguments)
{
    keepFreedMemory();
    std::set_terminate(&endAtOnce);
    holdStandardStreams();
    ignoreWriteSignals();
    StandardFiles::get().offerInput(&readStandardInput);
    Reporter reporter;
    int status = done;
    try {
        status = std::visit(Execution{reporter}, parseCommandLine(nbArguments, arguments));
    } catch (...) {
        Failure const failure = describeCurrentFailure();
        reporter.reportFailure(failure);
        status = failure.status;
    }
    if (status == static_cast<int>(ExitStatus::Surroundings)) {
        // Libraries that were short of memory may be in a state in which they cannot end.
        std::_Exit(status);
    }
    return status;
}
