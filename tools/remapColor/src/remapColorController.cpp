// The controller of a Remap Color node, its processing chain's output node, and the evaluation of
// picked pixels.

#include "remapColorController.h"

#include "base/Assertions.h"
#include "base/EvEventManager.h"
#include "callbacks/EvRequestSafeCb.h"
#include "internalAPI/PiSocketUtil.h"
#include "pluginAPI/PiShape2dInterface.h"
#include "pluginAPI/PiUndo.h"
#include "pluginAPI/PxRequestMgr.h"
#include "remapColorModeFactory.h"
#include "remapColorModeProcNode.h"
#include "remapColorNames.h"
#include "remapColorNodeUtils.h"

#include <utility>
#include <vector>

namespace {

constexpr std::size_t nbModes = RemapColorController::nbModes;

// Defaults of the curve editor's stored values.
constexpr double defaultHistoZoom = 1.0;
constexpr int defaultHistoDisplay = 2;
constexpr int defaultChannelDisplay = 3;
constexpr int defaultCurveDisplay = 1;

RemapColorController::EventHandlerFactory eventHandlerFactory = nullptr;
std::vector<RemapColorController::InstanceDataFactory> instanceDataFactories;

using ModeNodes = std::array<PxStrongHndl<>, nbModes>;

/// The chain's output: hands each request, as it is, to the node of the mode that "Mode" chooses at
/// the request's time. The validity is that node's alone: an animated "Mode" does not shorten it.
class RemapColorNode : public PxImageNode {
public:
    RemapColorNode(Init const& init, PxNodePtr<PxImageProtocol const> const& imageSource,
                   PxStrongHndl<> const& modeValue, PxStrongHndl<> const& depthValue,
                   ModeNodes const& nodes)
        : PxNode(init), PxImageNode(init, imageSource), source(imageSource),
          mode(castNode<PxAnimValueProtocol<int> const>(modeValue)),
          outputDepth(castNode<PxAnimValueProtocol<int> const>(depthValue)),
          modeNodes{castNode<PxImageProtocol const>(nodes[0]),
                    castNode<PxImageProtocol const>(nodes[1])}
    {
    }

    ~RemapColorNode() noexcept(false) override
    {
        unregisterChild(source);
        unregisterChild(mode);
        unregisterChild(outputDepth);
        unregisterChild(modeNodes[0]);
        unregisterChild(modeNodes[1]);
    }

    void init() override
    {
        PxImageNode::init();
        registerChild(source);
        registerChild(mode);
        registerChild(outputDepth);
        registerChild(modeNodes[0]);
        registerChild(modeNodes[1]);
    }

    PxImageResult computeImage(PxImageContext const& context) const override
    {
        return chooseModeNode(context).computeImage(context);
    }

    PxImageFormat computeImageFormat() const override
    {
        constexpr int abortLine = 367;
        return RemapColorNodeUtils::computeOutputFormat(source, outputDepth, abortLine);
    }

    /// The node of the mode that is chosen at `time`. Throws the null-pointer exception if it is
    /// missing, the assertion failure if "Mode" holds no mode.
    PxImageProtocol const& chooseModeNode(PxTimeContext const& time) const
    {
        int const chosen = mode->evaluate(time).getValue();
        Assertions::check(chosen >= 0 && static_cast<std::size_t>(chosen) < nbModes,
                          "chosen >= 0 && chosen < nbModes");
        return *modeNodes[static_cast<std::size_t>(chosen)];
    }

private:
    PxNodePtr<PxImageProtocol const> source;
    PxNodePtr<PxAnimValueProtocol<int> const> mode;
    PxNodePtr<PxAnimValueProtocol<int> const> outputDepth;
    PxNodePtr<PxImageProtocol const> modeNodes[nbModes];
};

PxUPtr<RemapColorNode const> createRemapColorNode(PxNodePtr<PxImageProtocol const> const& source,
                                                  PxStrongHndl<> const& modeValue,
                                                  PxStrongHndl<> const& depthValue,
                                                  ModeNodes const& modeNodes)
{
    auto const node = makeNode<RemapColorNode>(source, modeValue, depthValue, modeNodes);
    return PxUPtr<RemapColorNode const>(node.get());
}

/// Owns what the makers of instance data made, in their order.
class InstanceDataHolder : public RCBase<LkCounter<int>> {
public:
    using Entry = RCShdPtr<RCBase<LkCounter<int>>>;

    ~InstanceDataHolder() noexcept(false) override
    {
        for (Entry& entry : entries) {
            entry = {};
        }
    }

    void add(Entry const& entry) { entries.push_back(entry); }

private:
    std::vector<Entry> entries;
};

/// The first three numbers; black if there are fewer.
CoRgbColorTyped<float> toColour(Vector<double> const& numbers)
{
    if (numbers.size() < 3) {
        return {};
    }
    return {static_cast<float>(numbers[0]), static_cast<float>(numbers[1]),
            static_cast<float>(numbers[2])};
}

template <typename T>
void setStoredValue(RCShdPtr<PiNode> const& node, std::string const& name, T const& value)
{
    PiTypedValueUtil<T>(node->findValue(name, true), CheckNull::Yes)->setValue(value);
}

} // namespace

/// Evaluates one colour through the chain on a worker thread and posts the result. Made and
/// destroyed on the user-interface thread.
class RemapColorController::SinglePixelProc : public PxRequest {
public:
    SinglePixelProc(PxUPtr<RemapColorNode const> const& outputNode, PxTimeContext const& atTime,
                    CoRgbaColorTyped<float> const& colour,
                    RCWeakPtr<SinglePixelCallback> const& resultCallback)
        : node(outputNode), time(atTime), input(colour), callback(resultCallback)
    {
    }

    void performExecute() override
    {
        Assertions::check(PxRequestMgr::getInstance().isWorkerThreadCurrent(),
                          "PxRequestMgr::getInstance().isWorkerThreadCurrent()");
        PxImageProtocol const& modeNode = node->chooseModeNode(time);
        auto const* const procNode = dynamic_cast<ModeProcNode const*>(&modeNode);
        if (procNode == nullptr) {
            RCExUtil::throwExCastFailed(typeid(modeNode), typeid(ModeProcNode));
        }
        result = procNode->computePixel(time, input);
        done = true;
    }

    void postResult() override
    {
        if (done) {
            EvEventManager::getInstance().post(
                makeOwned<EvRequestSafeCb<RCWeakPtr, CoRgbaColorTyped<float>>>(callback, result));
        }
    }

    /// The result, once the request has run: waits for it. (0, 0, 0, 1) if it never ran.
    CoRgbaColorTyped<float> getValue() const
    {
        PxRequestMgr::getInstance().wait(this);
        return result;
    }

private:
    PxUPtr<RemapColorNode const> node;
    PxTimeContext time;
    CoRgbaColorTyped<float> input;
    CoRgbaColorTyped<float> result{0.0F, 0.0F, 0.0F, 1.0F};
    bool done = false;
    RCWeakPtr<SinglePixelCallback> callback; // Weak: a dead controller is not kept alive.
};

std::array<RCShdPtr<RemapColorController::ModeFactory>, RemapColorController::nbModes>
    RemapColorController::modeFactories;

RemapColorController::RemapColorController() : PiImageModifier("<ToolUiDir>/remapColor.xml") {}

RemapColorController::~RemapColorController() noexcept(false)
{
    if (pendingRequest != nullptr) {
        PxRequestMgr::getInstance().cancel(pendingRequest);
    }
    singlePixelCallback = {};
    if (pendingRequest != nullptr) {
        PxRequestMgr::getInstance().release(pendingRequest);
    }
    singlePixelResults.removeAllHandlers();
    procNode.reset();
}

void RemapColorController::nodeCreated()
{
    nodeLoaded();
    reset();
}

void RemapColorController::nodeLoaded()
{
    auto const bind = [node = getNode()](auto& view, std::string const& name) {
        view = std::decay_t<decltype(view)>(node->findValue(name, true), CheckNull::Yes);
    };
    bind(histoZoomValue, RemapColorNames::histoZoom);
    bind(histoDisplayValue, RemapColorNames::histoDisplay);
    bind(channelDisplayValue, RemapColorNames::channelDisplay);
    bind(curveDisplayValue, RemapColorNames::curveDisplay);
    bind(plotColorEnabledValue, RemapColorNames::plotColorEnabled);
    bind(plotColorValue, RemapColorNames::plotColor);
}

void RemapColorController::reset()
{
    RCShdPtr<PiNode> const node = getNode();
    {
        PiUndoGuardNoLog const noLog(false);
        setStoredValue(node, RemapColorNames::plotColorEnabled, false);
    }
    setPlotColorValue({});
    setOutputPlotColor({});
    PiImageModifier::reset();
    for (RCShdPtr<ModeFactory> const& factory : modeFactories) {
        factory->resetLinks(node);
    }
    resetAdjustedCurves();
    setStoredValue(node, RemapColorNames::histoZoom, defaultHistoZoom);
    setStoredValue(node, RemapColorNames::histoDisplay, defaultHistoDisplay);
    setStoredValue(node, RemapColorNames::channelDisplay, defaultChannelDisplay);
    setStoredValue(node, RemapColorNames::curveDisplay, defaultCurveDisplay);
}

void RemapColorController::createModifierProcNode(PxStrongHndl<PxNode const>& result,
                                                  PiInputNodeBuilder& builder,
                                                  PxNodePtr<PxImageProtocol const> const& source)
{
    ModeNodes modeNodes;
    for (std::size_t mode = 0; mode < nbModes; ++mode) {
        modeNodes[mode] = modeFactories[mode]->createModeProcNode(getNode(), builder, source);
    }
    PxStrongHndl<> const modeValue = builder.getInputNode(RemapColorNames::mode);
    PxStrongHndl<> const depthValue = builder.getInputNode(RemapColorNames::outputDepth);
    procNode = PxStrongHndl<PxNode const>(
        createRemapColorNode(source, modeValue, depthValue, modeNodes).get());
    result = procNode;
}

PiUserInterface::InstanceData
RemapColorController::createWidgetInstanceData(RCShdPtr<PiWidget> const& widget,
                                               RCShdPtr<PiTimePath const> const& path)
{
    if (instanceDataFactories.empty() || widget->getName() != RemapColorNames::mainContainer) {
        return {};
    }
    auto const holder = makeShared<InstanceDataHolder>();
    // By index: a maker may add another.
    for (std::size_t factory = 0; factory < instanceDataFactories.size(); ++factory) {
        holder->add(instanceDataFactories[factory](widget, *this, path));
    }
    return holder;
}

RCStrongPtr<PiEventHandler> RemapColorController::createEventHandler(PiViewer& viewer,
                                                                     RCShdPtr<PiNode> const& node,
                                                                     RCShdPtr<PiPath> const& path)
{
    return eventHandlerFactory == nullptr ? RCStrongPtr<PiEventHandler>()
                                          : eventHandlerFactory(viewer, node, path);
}

void RemapColorController::valueChanged(RCShdPtr<PiValue> const& value)
{
    std::string const name = value->getName();
    if (name == RemapColorNames::histoZoom) {
        histoZoomChanged.call();
    } else if (name == RemapColorNames::histoDisplay) {
        histoDisplayChanged.call();
    } else if (name == RemapColorNames::channelDisplay) {
        channelDisplayChanged.call();
    } else if (name == RemapColorNames::curveDisplay) {
        curveDisplayChanged.call();
    } else if (name == RemapColorNames::plotColor) {
        plotColorChanged.call(getPlotColor());
    }
}

std::string RemapColorController::getModeInputName()
{
    return RemapColorNames::mode;
}

std::string RemapColorController::getAdjustEnabledInputName()
{
    return RemapColorNames::adjust;
}

std::string RemapColorController::getCurveName(RemapColorTool::Channel channel)
{
    if (channel < 0 || channel >= RemapColorNames::nbChannels) {
        return {};
    }
    return RemapColorNames::join(RemapColorNames::adjustCurve,
                                 RemapColorNames::channelNames[static_cast<std::size_t>(channel)]);
}

void RemapColorController::registerModeFactory(RCShdPtr<ModeFactory> const& factory, int index)
{
    RCShdPtr<ModeFactory>& entry = modeFactories[static_cast<std::size_t>(index)];
    if (!(entry == factory)) {
        entry = factory;
    }
}

RCShdPtr<RemapColorController::ModeFactory> const& RemapColorController::getModeFactory(int index)
{
    return modeFactories[static_cast<std::size_t>(index)];
}

void RemapColorController::resetAdjustedCurve(RemapColorTool::Channel channel)
{
    RCShdPtr<PiInput> const input = PiSocketUtil::getInput(getNode(), getCurveName(channel));
    RCShdPtr<PiNode> const curveNode = input->getConnectedOutput()->getNode();
    auto const controller = curveNode->getController().lock();
    auto const curve = castStrong<PiShape2dInterface>(controller);
    if (curve.isNull()) {
        Assertions::throwAssertionFailed(RemapColorNodeUtils::controllerSourceFile, 1088,
                                         "!curve.isNull()");
    }
    curve->setControlPoints(getDefaultCurvePoints(), false);
}

void RemapColorController::resetAdjustedCurves()
{
    PiUndoGuard const guard(getNode()->getGraph()->getCommandStack(), "Reset Adjusted Curves",
                            PiExecParam());
    resetAdjustedCurve(RemapColorTool::Red);
    resetAdjustedCurve(RemapColorTool::Green);
    resetAdjustedCurve(RemapColorTool::Blue);
}

void RemapColorController::fillDefaultCurvePoints(Vector<GePoint2<float>>& points)
{
    constexpr float handle = 0.16666667F;
    auto const append = [&](float coordinate) { points.push_back({coordinate, coordinate}); };
    for (int key = 0; key < 2; ++key) {
        float const x = static_cast<float>(key) * 0.5F;
        append(x - handle);
        append(x);
        append(x + handle);
    }
    append(0.8333333F); // 0x3F555555
    append(1.0F);
    append(1.1666666F); // 0x3F955555
}

Vector<GePoint2<float>>& RemapColorController::getDefaultCurvePoints()
{
    static Vector<GePoint2<float>> points;
    return points;
}

RemapColorTool::DisplayCurve RemapColorController::getCurveDisplay()
{
    return static_cast<RemapColorTool::DisplayCurve>(curveDisplayValue->getValue());
}

RemapColorTool::DisplayChannel RemapColorController::getChannelDisplay()
{
    return static_cast<RemapColorTool::DisplayChannel>(channelDisplayValue->getValue());
}

RemapColorTool::DisplayHisto RemapColorController::getHistoDisplay()
{
    return static_cast<RemapColorTool::DisplayHisto>(histoDisplayValue->getValue());
}

double RemapColorController::getHistoZoom() const
{
    return histoZoomValue->getValue();
}

CoRgbColorTyped<float> RemapColorController::getPlotColor()
{
    return toColour(plotColorValue->getValue());
}

bool RemapColorController::isPlotColorEnabled() const
{
    return plotColorEnabledValue->getValue();
}

void RemapColorController::setPlotColor(CoRgbColorTyped<float> const& colour)
{
    PiUndoGuardNoLog const noLog(false);
    setStoredValue(getNode(), RemapColorNames::plotColorEnabled, true);
    setPlotColorValue(colour);
}

void RemapColorController::setPlotColorValue(CoRgbColorTyped<float> const& colour)
{
    PiUndoGuardNoLog const noLog(false);
    PiTypedValueArrayUtil<double>(getNode()->findValue(RemapColorNames::plotColor, true),
                                  CheckNull::Yes)
        ->setValue({colour.red, colour.green, colour.blue});
}

CoRgbColorTyped<float> RemapColorController::getOutputPlotColor()
{
    return outputPlotColor;
}

void RemapColorController::setOutputPlotColor(CoRgbColorTyped<float> const& colour)
{
    outputPlotColor = colour;
    CoRgbColorTyped<float> const told = colour; // a handler may set another one
    outputPlotColorChanged.call(told);
}

GeVector2<float> RemapColorController::getViewPan()
{
    return viewPan;
}

void RemapColorController::setViewPan(GeVector2<float> const& pan)
{
    viewPan = pan;
}

GeVector2<float> RemapColorController::getViewZoom()
{
    return viewZoom;
}

void RemapColorController::setViewZoom(GeVector2<float> const& zoom)
{
    viewZoom = zoom;
}

void RemapColorController::addCurveDisplayChangedCallback(CbHandler<CbEmptyType>* handler) const
{
    curveDisplayChanged.addHandler(handler);
}

void RemapColorController::addChannelDisplayChangedCallback(CbHandler<CbEmptyType>* handler) const
{
    channelDisplayChanged.addHandler(handler);
}

void RemapColorController::addHistoDisplayChangedCallback(CbHandler<CbEmptyType>* handler) const
{
    histoDisplayChanged.addHandler(handler);
}

void RemapColorController::addHistoZoomChangedCallback(CbHandler<CbEmptyType>* handler) const
{
    histoZoomChanged.addHandler(handler);
}

void RemapColorController::addPlotColorChangedCallback(PlotColorHandler* handler)
{
    plotColorChanged.addHandler(handler);
}

void RemapColorController::removePlotColorChangedCallback(PlotColorHandler* handler)
{
    plotColorChanged.removeHandler(handler);
}

void RemapColorController::addOutputPlotColorChangedCallback(PlotColorHandler* handler)
{
    outputPlotColorChanged.addHandler(handler);
}

void RemapColorController::removeOutputPlotColorChangedCallback(PlotColorHandler* handler)
{
    outputPlotColorChanged.removeHandler(handler);
}

void RemapColorController::addSinglePixelProcessCallback(SinglePixelHandler* handler)
{
    singlePixelResults.addHandler(handler);
}

void RemapColorController::removeSinglePixelProcessCallback(SinglePixelHandler* handler)
{
    singlePixelResults.removeHandler(handler);
}

void RemapColorController::processSinglePixel(PxTimeContext const& time,
                                              CoRgbaColorTyped<float> const& colour)
{
    assertNodeHandleThread(); // before anything is changed
    PxRequestMgr& requests = PxRequestMgr::getInstance();
    if (singlePixelCallback.isNull()) {
        auto const self = castStrong<RemapColorController>(getNode()->getController().lock());
        singlePixelCallback = makeStrong<SinglePixelCallback>(
            RCWeakPtr<RemapColorController>(self), &RemapColorController::singlePixelProcessed);
    }
    if (pendingRequest != nullptr) {
        requests.cancel(pendingRequest);
    }
    PxUPtr<RemapColorNode const> const outputNode(castNode<RemapColorNode const>(procNode).get());
    auto request = makeOwned<SinglePixelProc>(outputNode, time, colour, singlePixelCallback);
    requests.submit(request.get(), 0);
    SinglePixelProc* const former = std::exchange(pendingRequest, request.release());
    if (former != nullptr) {
        requests.release(former);
    }
}

void RemapColorController::singlePixelProcessed(CoRgbaColorTyped<float> const& colour)
{
    CoRgbaColorTyped<float> value = colour;
    singlePixelResults.call(value);
}

void RemapColorController::setEventHandlerFactory(EventHandlerFactory factory)
{
    eventHandlerFactory = factory;
}

void RemapColorController::addInstanceDataFactory(InstanceDataFactory factory)
{
    instanceDataFactories.push_back(factory);
}

void RemapColorController::clearInstanceDataFactories()
{
    instanceDataFactories.clear();
}
