#pragma once

/// A node of the tool with its controller link, by the operations that programs have.

#include "callbacks/CbFunction.h"
#include "controllerLink/ControllerLink.h"
#include "runtime/graph/HostGraph.h"
#include "runtime/loader/ToolLoader.h"

#include <string>

struct LinkedNode {
    LinkedNode()
    {
        loader.load(REMAPCOLOR_LIBRARY);
        loader.load(LINK_LIBRARY);
        graph = makeShared<HostGraph>();
        node = graph->createNode(loader.getTool("Remap Color"));
        link = openPanel();
    }

    RCShdPtr<ControllerLink> openPanel() const
    {
        auto const panel = makeShared<ControllerPanel>();
        castStrong<PiUserInterface>(node->getController().lock())
            ->createWidgetInstanceData(panel, {});
        return panel->getLink();
    }

    /// Lets go of the node; whoever else holds it keeps it.
    void loseNode()
    {
        graph->removeNode(node);
        node = {};
    }

    template <typename T>
    void set(std::string const& name, T const& constant) const
    {
        node->setValues({{name, Animated<T>(constant)}});
    }

    ToolLoader loader;
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;
    RCShdPtr<ControllerLink> link;
};
