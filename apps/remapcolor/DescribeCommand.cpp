// "describe": the tool and its inputs on standard output.

#include "remapcolor/DescribeCommand.h"

#include "remapcolor/CommandOptions.h"
#include "remapcolor/DescriptionJson.h"
#include "remapcolor/DescriptionTable.h"
#include "remapcolor/NodeRequest.h"
#include "remapcolor/StandardStreams.h"
#include "remapcolor/ToolSession.h"

void addDescribeOptions(CommandOptions& options, DescribeRequest& request)
{
    options.addFlag("--json", "Everything that the tool declares, as one JSON object",
                    [&request] { request.form = DescribeRequest::Form::Json; });
}

void runDescribe(DescribeRequest const& request)
{
    ToolSession const session{NodeRequest()};
    HostNode const& node = session.getNode();
    switch (request.form) {
    case DescribeRequest::Form::Table: writeStandardOutput(formatDescription(node)); break;
    case DescribeRequest::Form::Json: writeStandardOutput(formatDescriptionJson(node)); break;
    }
}
