// "describe": the tool and its inputs on standard output.

#include "remapcolor/commands/DescribeCommand.h"

#include "remapcolor/commands/DescriptionJson.h"
#include "remapcolor/commands/DescriptionTable.h"
#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/reports/StandardStreams.h"
#include "session/ToolSession.h"

void addDescribeOptions(CommandOptions& options, DescribeRequest& request)
{
    options.addFlag("--json", "Everything that the tool declares, as one JSON object",
                    [&request] { request.form = DescribeRequest::Form::Json; });
}

void runDescribe(DescribeRequest const& request)
{
    ToolSession const session;
    HostNode const& node = session.getNode();
    switch (request.form) {
    case DescribeRequest::Form::Table: writeStandardOutput(formatDescription(node)); break;
    case DescribeRequest::Form::Json: writeStandardOutput(formatDescriptionJson(node)); break;
    }
}
