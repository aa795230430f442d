// The link's package: installs itself with the tool's controller and hands out its operations.

#include "controllerLink/ControllerLink.h"

#include "base/InPackageInit.h"
#include "remapColorController.h"
#include "remapColorVxtoolInit.h"

namespace {

/// Hands results on to a function.
class PixelHandler : public RemapColorController::SinglePixelHandler {
public:
    using CbHandler::call;
    void call(CoRgbaColorTyped<float>& result) override
    {
        if (receiver) {
            receiver(result);
        }
    }

    ControllerLink::PixelReceiver receiver;
};

class Link : public ControllerLink {
public:
    explicit Link(RemapColorController& linkedController)
        : controller(linkedController), life(controller.getNode()->getController())
    {
        controller.addSinglePixelProcessCallback(&handler);
    }

    void setPixelReceiver(PixelReceiver receiver) override
    {
        handler.receiver = std::move(receiver);
    }

    void processSinglePixel(PxTimeContext const& time, Pixel const& colour) override
    {
        auto const held = life.lock();
        static_cast<void>(*held); // throws if it is gone
        controller.processSinglePixel(time, colour);
    }

private:
    RemapColorController& controller; // not to be used without a handle from `life`
    RCWeakPtr<PiNodeController> life;
    PixelHandler handler; // leaves the controller's list when either of them dies
};

/// Other panels than ours get nothing.
PiUserInterface::InstanceData makeLink(RCShdPtr<PiWidget> const& widget,
                                       RemapColorController& controller,
                                       RCShdPtr<PiTimePath const> const&)
{
    auto* const panel = dynamic_cast<ControllerPanel*>(widget.get());
    if (panel == nullptr) {
        return {};
    }
    panel->setLink(makeShared<Link>(controller));
    return panel->getLink();
}

class LinkPackage : public InPackageInit {
public:
    LinkPackage() : InPackageInit("remapColorLink")
    {
        registerPackage();
        InPackageInit::addDependency(&InInit<VxInit::remapColorVxtool>::getType());
    }

    // The tool's package forgets the maker when it is shut down, which comes after this one.
    void startUp() override { RemapColorController::addInstanceDataFactory(&makeLink); }
};

LinkPackage const package;

} // namespace
