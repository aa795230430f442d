#include "remapcolor/ToolSession.h"

#include "remapcolor/NodeRequest.h"
#include "remapcolor/ProjectFiles.h"
#include "remapcolor/ToolKeys.h"

ToolSession::ToolSession(NodeRequest const& request)
{
    loader.find(ToolKeys::libraryFile);
    graph = makeShared<HostGraph>();
    node = prepareNode(loader.getTool(ToolKeys::tool), request);
    node->setValues(collectValues(*node, request.settings));
}

RCShdPtr<HostNode> ToolSession::prepareNode(PiToolProtocol const& tool, NodeRequest const& request)
{
    RCShdPtr<HostNode> const created = graph->createNode(tool);
    if (!request.project.has_value()) {
        return created;
    }
    // The new node only says what values there are.
    NodeValues const saved = loadProject(*request.project, *created);
    graph->removeNode(created);
    return graph->loadNode(tool, saved);
}

RCShdPtr<ControllerLink> ToolSession::linkController()
{
    loader.find(controllerLinkFile);
    auto const panel = makeShared<ControllerPanel>();
    castStrong<PiUserInterface>(node->getController().lock())->createWidgetInstanceData(panel, {});
    if (panel->getLink().isNull()) {
        throw ToolLoadError(std::string(controllerLinkFile) + " does not belong to this tool");
    }
    return panel->getLink();
}
