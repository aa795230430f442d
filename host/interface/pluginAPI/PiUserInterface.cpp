#include "pluginAPI/PiUserInterface.h"

#include "pluginAPI/PiNode.h"

#include <utility>

PiUserInterface::PiUserInterface(std::string panelFile) : userInterfaceFile(std::move(panelFile)) {}

PiUserInterface::~PiUserInterface() noexcept(false) = default;

PiUserInterface::InstanceData PiUserInterface::createInstanceData(RCShdPtr<PiTimePath const> const&)
{
    return {};
}

PiUserInterface::InstanceData
PiUserInterface::createWidgetInstanceData(RCShdPtr<PiWidget> const&,
                                          RCShdPtr<PiTimePath const> const&)
{
    return {};
}

PiEventHandlingInterface::~PiEventHandlingInterface() noexcept(false) = default;

RCStrongPtr<PiEventHandler> PiEventHandlingInterface::createEventHandler(PiViewer&,
                                                                         RCShdPtr<PiNode> const&,
                                                                         RCShdPtr<PiPath> const&)
{
    return {};
}
