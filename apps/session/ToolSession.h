#pragma once

#include "controllerLink/ControllerLink.h"
#include "runtime/graph/HostGraph.h"
#include "runtime/loader/ToolLoader.h"

#include <filesystem>
#include <vector>

/// The loaded tool and one node of it. Handles of the node and of its chains are let go before the
/// session ends. One at a time; main thread.
class ToolSession {
public:
    /// A node with the values of the projects, one after the other. Throws ToolLoadError,
    /// UsageError, ValueError, SurroundingsError.
    explicit ToolSession(std::vector<std::filesystem::path> const& projects = {});

    HostNode& getNode() const { return *node; }

    /// The file that lays out the tool's panel; whether it is there is not looked at. The folder
    /// "ui" beside the tool's library has it.
    std::filesystem::path getPanelFile() const;

    /// Loads the link and gives the node controller's operations. Once. Throws ToolLoadError.
    RCShdPtr<ControllerLink> linkController();

private:
    RCShdPtr<HostNode> prepareNode(PiToolProtocol const& tool,
                                   std::vector<std::filesystem::path> const& projects);

    // In this order: the libraries outlive everything that comes from them.
    ToolLoader loader;
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;
};
