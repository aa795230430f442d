#pragma once

#include "base/RCBase.h"
#include "base/RCShdPtr.h"
#include "base/RCWeakPtr.h"

#include <string>

class PiNode;

/// A widget of a tool's panel.
class PiWidget : public RCBase<LkCounter<int>> {
public:
    virtual std::string getName() const = 0;
};

/// Where in a project a node stands.
class PiPath : public RCBase<LkCounter<int>> {};

/// A path and the time at which it is looked at.
class PiTimePath : public PiPath {};

/// A window that shows pictures.
class PiViewer {
public:
    virtual ~PiViewer() = default;
};

/// Handles what a user does in a viewer.
class PiEventHandler {
public:
    virtual ~PiEventHandler() = default;
};

/// A controller with a panel of its own. User-interface thread.
class PiUserInterface {
public:
    using InstanceData = RCShdPtr<RCBase<LkCounter<int>>>;

    explicit PiUserInterface(std::string panelFile);
    virtual ~PiUserInterface() noexcept(false);

    /// The file that lays out the panel; "<ToolUiDir>" stands for the folder of such files.
    std::string const& getUserInterfaceFile() const { return userInterfaceFile; }

    /// Data that the host keeps with an instance of the panel. Our host keeps none.
    virtual InstanceData createInstanceData(RCShdPtr<PiTimePath const> const& path);

    /// Data that the host keeps with one widget of the panel; empty for none.
    virtual InstanceData createWidgetInstanceData(RCShdPtr<PiWidget> const& widget,
                                                  RCShdPtr<PiTimePath const> const& path);

private:
    std::string userInterfaceFile;
};

/// A controller that handles what a user does in a viewer. User-interface thread.
class PiEventHandlingInterface {
public:
    virtual ~PiEventHandlingInterface() noexcept(false);

    /// A new handler for a viewer; empty when the tool has none.
    virtual RCStrongPtr<PiEventHandler> createEventHandler(PiViewer& viewer,
                                                           RCShdPtr<PiNode> const& node,
                                                           RCShdPtr<PiPath> const& path);
};
