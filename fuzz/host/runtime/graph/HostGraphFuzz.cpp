// A graph and its controllers as a program uses them, each byte a call: nodes come and go, values
// change, commands open and close, picks are on their way when their node goes, and whoever is told
// of something makes the next call. Afterwards all that was undone can be redone, twice alike.

#include "runtime/graph/HostGraph.h"

#include "base/EvEventManager.h"
#include "callbacks/CbFunction.h"
#include "controllerLink/ControllerLink.h"
#include "pluginAPI/PiImageModifier.h"
#include "runtime/engine/SourceImageNode.h"
#include "runtime/project/Project.h"
#include "support/Bytes.h"
#include "support/Expect.h"
#include "support/Tool.h"

#include <array>
#include <chrono>
#include <cstring>

namespace {

constexpr std::size_t mostNodes = 4;
constexpr int mostCalls = 200;

bool linkControllers()
{
    getTool();
    getLoader().find(controllerLinkFile);
    return true;
}

class Session {
public:
    explicit Session(Bytes& input) : bytes(input) { addNode(graph->createNode(getTool())); }

    void run()
    {
        for (int call = 0; call < mostCalls && !bytes.isEmpty(); ++call) {
            callOnce();
        }
        while (nbOpen > 0) {
            closeCommand();
        }
        std::string const redone = undoAndRedo();
        expect(undoAndRedo() == redone, "what was undone is redone");
        EvEventManager::getInstance().processEvents();
        static_cast<void>(EvEventManager::getInstance().takeFailures());
    }

private:
    using Handler = CbFunction<ControllerNotice const>;
    struct Editor {
        RCShdPtr<HostNode> node;
        RCShdPtr<ControllerLink> link;
        std::shared_ptr<Handler> handler;
    };
    using Call = void (Session::*)();

    void callOnce()
    {
        static constexpr std::array<Call, 20> calls = {
            &Session::createNode,  &Session::loadNode,     &Session::setNumber,
            &Session::setNumber,   &Session::setCurve,     &Session::setSwitch,
            &Session::setList,     &Session::reset,        &Session::resetInputs,
            &Session::openCommand, &Session::closeCommand, &Session::undo,
            &Session::redo,        &Session::pick,         &Session::evaluate,
            &Session::dropNode,    &Session::resetCurves,  &Session::setColors,
            &Session::drawCurve,   &Session::dropHandler};
        try {
            (this->*calls.at(static_cast<std::size_t>(bytes.below(calls.size()))))();
        } catch (HostException const& error) {
            expect(*error.what() != '\0', "a failure has a text");
        }
    }

    void addNode(RCShdPtr<HostNode> const& node)
    {
        auto const panel = makeShared<ControllerPanel>();
        castStrong<PiUserInterface>(node->getController().lock())
            ->createWidgetInstanceData(panel, {});
        RCShdPtr<ControllerLink> const link = panel->getLink();
        auto const handler = std::make_shared<Handler>([this](auto&) { callFromWithin(); });
        link->addPickHandler(&answered);
        link->addNoticeHandler(handler.get());
        editors.push_back({node, link, handler});
    }

    /// Whoever is told of something may do anything, even let its own node go.
    void callFromWithin()
    {
        if (!isWithin) {
            isWithin = true;
            callOnce();
            isWithin = false;
        }
    }

    bool hasNode() const { return !editors.empty(); }
    Editor& someEditor()
    {
        if (!hasNode()) {
            addNode(graph->createNode(getTool()));
        }
        return editors[bytes.byte() % editors.size()];
    }
    HostValue& someValue()
    {
        auto const& values = someEditor().node->getValues();
        return *values[bytes.byte() % values.size()].value;
    }

    void createNode()
    {
        if (editors.size() < mostNodes) {
            addNode(graph->createNode(getTool()));
        }
    }
    void loadNode()
    {
        HostNode const& node = *someEditor().node;
        std::string const saved = writeProject(node);
        RCShdPtr<HostNode> const loaded = graph->loadNode(getTool(), readProject(saved, node));
        expect(writeProject(*loaded) == saved, "a loaded node is the saved one");
        if (editors.size() < mostNodes) {
            addNode(loaded);
        } else {
            graph->removeNode(loaded);
        }
    }

    template <typename T>
    void setAnimated(HostValue& value, T first, T second)
    {
        if (bytes.below(2) == 0) {
            value.setState(Animated<T>(first));
        } else {
            value.setState(Animated<T>(std::vector<Keyframe<T>>{{0, first}, {2, second}}));
        }
    }
    void setNumber()
    {
        HostValue& value = someValue();
        if (std::holds_alternative<Animated<int>>(*value.getState())) {
            setAnimated<int>(value, bytes.below(8) - 2, bytes.below(8) - 2);
        } else {
            setAnimated<double>(value, bytes.number(), bytes.number());
        }
    }
    void setSwitch() { setAnimated<bool>(someValue(), bytes.below(2) != 0, bytes.below(2) != 0); }
    void setList()
    {
        Vector<double> numbers;
        for (int number = bytes.below(5); number > 0; --number) {
            numbers.push_back(bytes.number());
        }
        someValue().setState(numbers);
    }
    void setCurve()
    {
        auto const& values = someEditor().node->getValues();
        for (std::size_t slot = bytes.byte() % values.size(); slot < values.size(); ++slot) {
            HostValue& value = *values[slot].value;
            if (std::holds_alternative<Animated<CurvePoints>>(*value.getState())) {
                CurvePoints points(3 * static_cast<std::size_t>(bytes.below(5)));
                for (GePoint2<float>& point : points) {
                    point = {bytes.number(), bytes.number()};
                }
                CurvePoints const others(points.rbegin(), points.rend());
                return setAnimated<CurvePoints>(value, points, others);
            }
        }
    }

    void reset()
    {
        castStrong<PiToolInterface>(someEditor().node->getController().lock())->reset();
    }
    void resetInputs() { someEditor().node->resetInputs(); }

    void openCommand()
    {
        graph->getHistory().beginCommand("command");
        ++nbOpen;
    }
    void closeCommand()
    {
        nbOpen -= nbOpen > 0 ? 1 : 0;
        graph->getHistory().endCommand();
    }
    void undo() { graph->getHistory().undo(); }
    void redo() { graph->getHistory().redo(); }

    void pick()
    {
        RCShdPtr<ControllerLink> const link = someEditor().link;
        link->processSinglePixel(PxTimeContext(bytes.number()),
                                 {bytes.number(), bytes.number(), bytes.number(), bytes.number()});
        if (bytes.below(2) != 0) {
            EvEventManager::getInstance().waitForEvents(std::chrono::milliseconds(1));
        }
        EvEventManager::getInstance().processEvents();
    }

    /// A pixel through a whole chain.
    void evaluate()
    {
        ImageInfo info;
        info.dataWindow = info.displayWindow = {0, 0, 1, 1};
        info.format =
            IxPixelFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32, Rational(1, 1), false);
        auto const start = makeNode<SourceImageNode>(info);
        auto const chain = castNode<PxImageProtocol const>(
            someEditor().node->buildChain(PxNodePtr<PxImageProtocol const>(start)));
        IxWriteGuard const guard(IxTile(info.format, info.dataWindow));
        float const pixel[] = {bytes.number(), bytes.number(), bytes.number(), bytes.number()};
        std::memcpy(guard.getRow(0), pixel, sizeof pixel);
        start->addStrip(guard.getTile());
        double const time = bytes.number();
        PxWorkerScope const worker;
        static_cast<void>(chain->computeImage(PxImageContext(time, info.dataWindow)));
    }

    void resetCurves()
    {
        RCShdPtr<ControllerLink> const link = someEditor().link;
        int const channel = bytes.below(5) - 1;
        channel == 3 ? link->resetCurves() : link->resetCurve(channel);
    }
    void setColors()
    {
        RCShdPtr<ControllerLink> const link = someEditor().link;
        ControllerLink::Color const color{bytes.number(), bytes.number(), bytes.number()};
        bytes.below(2) == 0 ? link->setPlotColor(color) : link->setOutputPlotColor(color);
        static_cast<void>(link->getPlotColor());
        static_cast<void>(link->getDisplay());
    }
    /// As an editor draws it.
    void drawCurve()
    {
        RCShdPtr<ControllerLink> const link = someEditor().link;
        std::array<float, ControllerLink::nbParams> params{};
        for (float& param : params) {
            param = bytes.number();
        }
        auto const mode = static_cast<ControllerLink::Mode>(bytes.below(ControllerLink::nbModes));
        auto const points =
            link->computeCurve(mode, params, {bytes.number(), bytes.number()}, bytes.below(40));
        std::vector<float> values;
        for (GePoint2<float> const& point : points) {
            values.push_back(point.y);
        }
        ControllerLink::Points curve(static_cast<std::size_t>(bytes.below(10)));
        for (GePoint2<float>& point : curve) {
            point = {bytes.number(), bytes.number()};
        }
        static_cast<void>(link->mapThroughCurve(curve, values));
    }
    void dropHandler() { someEditor().handler.reset(); }

    void dropNode()
    {
        if (!hasNode()) {
            return;
        }
        auto const editor = editors.begin() + bytes.byte() % static_cast<int>(editors.size());
        Editor const dropped = *editor;
        editors.erase(editor);
        graph->removeNode(dropped.node);
    }

    std::string undoAndRedo()
    {
        HostCommandStack& history = graph->getHistory();
        while (history.canUndo()) {
            history.undo();
        }
        while (history.canRedo()) {
            history.redo();
        }
        std::string text;
        for (Editor const& editor : editors) {
            text += writeProject(*editor.node);
        }
        return text;
    }

    Bytes& bytes;
    RCShdPtr<HostGraph> graph = makeShared<HostGraph>();
    std::vector<Editor> editors;
    int nbOpen = 0;
    bool isWithin = false;
    CbFunction<PickAnswer const> answered{[this](PickAnswer const&) { callFromWithin(); }};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static bool const isLinked = linkControllers();
    expect(isLinked, "controllers can be reached");
    Bytes bytes(data, size);
    Session(bytes).run();
    return 0;
}
