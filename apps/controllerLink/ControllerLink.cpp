// The link's package: installs itself with the tool's controller and hands out its operations.

#include "controllerLink/ControllerLink.h"

#include "base/Assertions.h"
#include "base/InPackageInit.h"
#include "callbacks/CbFunction.h"
#include "pluginAPI/PxSubmitter.h"
#include "remapColorController.h"
#include "remapColorCurveSampling.h"
#include "remapColorEXRMode.h"
#include "remapColorLinearMode.h"
#include "remapColorNames.h"
#include "remapColorVxtoolInit.h"

namespace {

using Kind = ControllerNotice::Kind;

RemapColorTool::Channel toChannel(int channel)
{
    return static_cast<RemapColorTool::Channel>(channel);
}

/// The tool would go on for ever where a step does not move x. An empty range has no step.
void checkSteps(GeInterval<float> const& range, int samples)
{
    float const step = (range.maximum - range.minimum) / static_cast<float>(samples);
    bool const isEmpty = !(range.maximum >= range.minimum);
    bool const moves = range.minimum + step > range.minimum && range.maximum + step > range.maximum;
    Assertions::check(isEmpty || moves, "a step along the range moves x");
}

/// Turns what the controller's dispatchers tell into notices.
class NoticeRelay {
public:
    explicit NoticeRelay(RemapColorController& controller)
    {
        controller.addCurveDisplayChangedCallback(&curveDisplay);
        controller.addChannelDisplayChangedCallback(&channelDisplay);
        controller.addHistoDisplayChangedCallback(&histoDisplay);
        controller.addHistoZoomChangedCallback(&histoZoom);
        controller.addPlotColorChangedCallback(&plotColor);
        controller.addOutputPlotColorChangedCallback(&outputPlotColor);
    }

    void addHandler(ControllerLink::NoticeHandler* handler) { notices.addHandler(handler); }

private:
    using PlainHandler = CbFunction<CbEmptyType>;
    using ColorHandler = CbFunction<CoRgbColorTyped<float> const>;

    PlainHandler::Function tell(Kind kind)
    {
        return [this, kind](CbEmptyType&) { notices.call({kind, {}}); };
    }
    ColorHandler::Function tellColor(Kind kind)
    {
        return [this, kind](auto const& color) { notices.call({kind, color}); };
    }

    CbDispatcher<ControllerNotice const> notices;
    // They leave the controller's lists when either of them dies.
    PlainHandler curveDisplay{tell(Kind::CurveDisplay)};
    PlainHandler channelDisplay{tell(Kind::ChannelDisplay)};
    PlainHandler histoDisplay{tell(Kind::HistoDisplay)};
    PlainHandler histoZoom{tell(Kind::HistoZoom)};
    ColorHandler plotColor{tellColor(Kind::PlotColor)};
    ColorHandler outputPlotColor{tellColor(Kind::OutputPlotColor)};
};

class Link : public ControllerLink {
public:
    explicit Link(RemapColorController& linkedController)
        : controller(linkedController), life(controller.getNode()->getController()),
          relay(linkedController)
    {
        controller.addSinglePixelProcessCallback(&pixelHandler);
    }

    std::string getModeName(Mode mode) const override
    {
        return mode == Linear ? RemapColorLinearMode::getName() : RemapColorEXRMode::getName();
    }
    std::string getModeInputName() const override
    {
        return RemapColorController::getModeInputName();
    }
    std::string getAdjustInputName() const override
    {
        return RemapColorController::getAdjustEnabledInputName();
    }
    std::string getClampInputName() const override { return RemapColorLinearMode::getClampName(); }
    std::string getCurveInputName(int channel) const override
    {
        return RemapColorController::getCurveName(toChannel(channel));
    }
    std::string getParamInputName(Mode mode, int param, int channel) const override
    {
        return mode == Linear ? RemapColorLinearMode::getInputName(param, channel)
                              : RemapColorEXRMode::getInputName(param, channel);
    }
    std::string getValueName(Kind kind) const override
    {
        switch (kind) {
        case Kind::CurveDisplay: return RemapColorNames::curveDisplay;
        case Kind::ChannelDisplay: return RemapColorNames::channelDisplay;
        case Kind::HistoDisplay: return RemapColorNames::histoDisplay;
        case Kind::HistoZoom: return RemapColorNames::histoZoom;
        case Kind::PlotColor: return RemapColorNames::plotColor;
        case Kind::OutputPlotColor: break;
        }
        return {};
    }

    std::string getPlotColorEnabledName() const override
    {
        return RemapColorNames::plotColorEnabled;
    }

    void resetCurve(int channel) override { hold()->resetAdjustedCurve(toChannel(channel)); }
    void resetCurves() override { hold()->resetAdjustedCurves(); }

    Points computeCurve(Mode mode, std::array<float, nbParams> const& params,
                        GeInterval<float> const& range, int samples) const override
    {
        checkSteps(range, samples);
        constexpr bool isClamped = false; // the drawn curve never is
        auto const& [a, b, c, d, gamma] = params;
        Points points;
        if (mode == Linear) {
            RemapColorLinearMode::computeCurve(range, samples, isClamped, a, b, c, d, gamma,
                                               points);
        } else {
            RemapColorEXRMode::computeCurve(range, samples, a, b, c, d, gamma, points);
        }
        return points;
    }

    std::vector<float> mapThroughCurve(Points const& curvePoints,
                                       std::span<float const> values) const override
    {
        Assertions::check(curvePoints.size() % 3 == 0, "curvePoints.size() % 3 == 0");
        auto curve = RemapColorCurveSampling::makeCurve(curvePoints);
        auto sampled = RemapColorCurveSampling::sampleCurve(curve);
        auto const lut = RemapColorCurveSampling::makeLut(curve, sampled);
        std::vector<float> mapped(values.size());
        for (std::size_t index = 0; index < values.size(); ++index) {
            lut->processScanline(mapped[index], values[index]);
        }
        return mapped;
    }

    Display getDisplay() const override
    {
        auto const held = hold();
        return {held->getCurveDisplay(), held->getChannelDisplay(), held->getHistoDisplay(),
                held->getHistoZoom()};
    }
    bool isPlotColorEnabled() const override { return hold()->isPlotColorEnabled(); }
    Color getPlotColor() const override { return hold()->getPlotColor(); }
    void setPlotColor(Color const& color) override { hold()->setPlotColor(color); }
    Color getOutputPlotColor() const override { return hold()->getOutputPlotColor(); }
    void setOutputPlotColor(Color const& color) override { hold()->setOutputPlotColor(color); }
    GeVector2<float> getViewPan() const override { return hold()->getViewPan(); }
    void setViewPan(GeVector2<float> const& pan) override { hold()->setViewPan(pan); }
    GeVector2<float> getViewZoom() const override { return hold()->getViewZoom(); }
    void setViewZoom(GeVector2<float> const& zoom) override { hold()->setViewZoom(zoom); }

    void addNoticeHandler(NoticeHandler* handler) override { relay.addHandler(handler); }

    std::uint64_t processSinglePixel(PxTimeContext const& time, Pixel const& colour) override
    {
        auto const held = hold();
        PxSubmitter::Scope const ours(submitter);
        held->processSinglePixel(time, colour);
        return submitter.getNewest();
    }
    void addPickHandler(PickHandler* handler) override { picks.addHandler(handler); }

private:
    /// The controller, kept alive for a call.
    struct Held {
        RCStrongPtr<PiNodeController> life;
        RemapColorController& controller;
        RemapColorController* operator->() const { return &controller; }
    };

    /// Throws if the controller is gone.
    Held hold() const
    {
        auto const held = life.lock();
        static_cast<void>(*held);
        return {held, controller};
    }

    void answer(PickAnswer told)
    {
        RCShdPtr<Link> const self(this); // a handler may close the panel
        told.isNewest = told.pick == submitter.getNewest();
        picks.call(told);
    }

    RemapColorController& controller; // not to be used without a handle from `life`
    RCWeakPtr<PiNodeController> life;
    NoticeRelay relay;
    CbDispatcher<PickAnswer const> picks;
    PxSubmitter submitter{[this](PxSubmitter::Loss const& loss) {
        auto const outcome = loss.isCancelled ? PickAnswer::Overtaken : PickAnswer::Failed;
        answer({loss.request, false, outcome, {}, loss.failure});
    }};
    CbFunction<Pixel> pixelHandler{[this](Pixel const& result) {
        std::uint64_t const pick = submitter.findSourceOfEvent();
        if (pick != 0) { // else another panel's
            answer({pick, false, PickAnswer::Done, result, ""});
        }
    }};
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
