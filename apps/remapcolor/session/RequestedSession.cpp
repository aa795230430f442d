#include "remapcolor/session/RequestedSession.h"

RequestedSession::RequestedSession(NodeRequest const& request) : ToolSession(request.projects)
{
    getNode().setValues(collectValues(getNode(), request.settings));
}
