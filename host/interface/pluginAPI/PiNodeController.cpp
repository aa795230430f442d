#include "pluginAPI/PiNodeController.h"

PiNodeController::~PiNodeController() noexcept(false) = default;

void PiNodeController::nodeCreated() {}

void PiNodeController::nodeLoaded() {}

RCShdPtr<PiNode> PiNodeController::getNode() const
{
    return RCShdPtr<PiNode>(node);
}
