#pragma once

// How a program reaches the controller of a Remap Color node although it does not link the tool's
// library: through the link, a library of our own that does. The program loads the tool and then
// the link (both with ToolLoader), makes a ControllerPanel and hands it to the controller's
// createWidgetInstanceData; the link, which has installed itself with the controller, puts the
// node's ControllerLink into the panel. User-interface thread.

#include "pluginAPI/PiUserInterface.h"
#include "pluginAPI/PxTimeContext.h"
#include "primitives/CoColor.h"

#include <functional>
#include <string>
#include <utility>

/// File name of the link's library, which lies where tools lie.
inline constexpr char const* controllerLinkFile = "libremapColorLink.so";

/// The controller's operations that our programs use. Does not keep the node alive; lives no longer
/// than the loaded libraries.
class ControllerLink : public RCBase<LkCounter<int>> {
public:
    using Pixel = CoRgbaColorTyped<float>;
    using PixelReceiver = std::function<void(Pixel const& result)>;

    /// Who gets the results of processSinglePixel, on the user-interface thread.
    virtual void setPixelReceiver(PixelReceiver receiver) = 0;

    /// Sends a colour through the node's chain, as it is at `time`, on a worker; returns at once.
    /// A newer call cancels the one before it. Throws the null-pointer exception if the node is
    /// gone.
    virtual void processSinglePixel(PxTimeContext const& time, Pixel const& colour) = 0;
};

/// The main container of a panel that has no widgets: what the link recognises.
class ControllerPanel : public PiWidget {
public:
    std::string getName() const override { return "_mainContainer"; }

    void setLink(RCShdPtr<ControllerLink> controllerLink) { link = std::move(controllerLink); }

    /// Empty until the controller has been asked for the panel's data.
    RCShdPtr<ControllerLink> const& getLink() const { return link; }

private:
    RCShdPtr<ControllerLink> link;
};
