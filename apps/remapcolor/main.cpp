// remapcolor: the command line of Remap Color.

#include "remapcolor/CommandLine.h"
#include "remapcolor/DescribeCommand.h"
#include "remapcolor/Failures.h"
#include "remapcolor/PickCommand.h"
#include "remapcolor/RenderCommand.h"
#include "remapcolor/Reporter.h"
#include "remapcolor/StandardStreams.h"
#include "remapcolor/StopSignals.h"

#include <variant>

namespace {

/// Does what the command line asks for.
struct Execution {
    Reporter& reporter;

    void operator()(PrintRequest const& request) const { writeStandardOutput(request.text); }
    void operator()(DescribeRequest const& request) const { runDescribe(request); }
    void operator()(PickRequest const& request) const { runPick(request, reporter); }
    void operator()(ProjectRequest const& request) const { runProject(request); }
    void operator()(RenderRequest const& request) const
    {
        reporter.configure(request.progress, request.verbosity);
        runRender(request, reporter);
    }
};

} // namespace

int main(int nbArguments, char** arguments)
{
    holdStandardStreams();
    ignoreWriteSignals();
    Reporter reporter;
    try {
        std::visit(Execution{reporter}, parseCommandLine(nbArguments, arguments));
        return static_cast<int>(ExitStatus::Done);
    } catch (...) {
        Failure const failure = describeCurrentFailure();
        reporter.reportFailure(failure);
        return failure.status;
    }
}
