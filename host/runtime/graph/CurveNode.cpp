#include "runtime/graph/CurveNode.h"

#include "pluginAPI/PiNodeController.h"
#include "pluginAPI/PiShape2dInterface.h"
#include "runtime/graph/HostGraph.h"
#include "runtime/graph/HostSockets.h"

namespace {

class CurveController : public virtual PiNodeController, public PiShape2dInterface {
public:
    explicit CurveController(RCShdPtr<HostValue> const& curveValue) : curve(curveValue) {}

    void setControlPoints(Vector<GePoint2<float>> const& points, bool) override
    {
        curve->setState(Animated<CurvePoints>(points));
    }

    Vector<GePoint2<float>> getControlPoints() const override
    {
        return std::get<Animated<CurvePoints>>(*curve->getState()).evaluate(0.0).getValue();
    }

private:
    RCShdPtr<HostValue> curve;
};

} // namespace

CurveNode::CurveNode(RCShdPtr<HostValue> const& curveValue, HostGraph& hostGraph)
    : curve(curveValue), graph(&hostGraph), controller(makeOwned<CurveController>(curveValue))
{
    controller->attach(*this);
}

CurveNode::~CurveNode() noexcept(false)
{
    controller->detach(); // somebody may hold it for a moment longer
}

RCShdPtr<PiInput> CurveNode::findInput(std::string const& name, bool mustExist) const
{
    if (mustExist) {
        throw UnknownNameError("a curve has no input \"" + name + "\"");
    }
    return {};
}

RCShdPtr<PiValue> CurveNode::findValue(std::string const& name, bool) const
{
    return name == curve->getName() ? curve : RCShdPtr<HostValue>();
}

RCWeakPtr<PiNodeController> CurveNode::getController() const
{
    return controller;
}

RCShdPtr<PiGraph> CurveNode::getGraph() const
{
    return RCShdPtr<PiGraph>(graph);
}
