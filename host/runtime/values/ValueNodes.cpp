#include "runtime/values/ValueNodes.h"

#include <utility>

namespace {

template <typename T>
class ValueNode : public PxAnimValueProtocol<T> {
public:
    ValueNode(PxNode::Init const& init, RCShdPtr<HostValue> const& observedValue)
        : PxNode(init), value(observedValue)
    {
    }

    PxValueResult<T> evaluate(PxTimeContext const& context) const override
    {
        auto const state = value->getState();
        return std::get<Animated<T>>(*state).evaluate(context.getTime());
    }

private:
    RCShdPtr<HostValue> value;
};

/// A curve's control points at one moment.
class ShapeAtTime : public PmShape2d {
public:
    explicit ShapeAtTime(CurvePoints curvePoints) : points(std::move(curvePoints)) {}

    bool hasControlPoints() const override { return !points.empty(); }
    Vector<GePoint2<float>> takeControlPoints() const override { return points; }

private:
    CurvePoints points;
};

class ShapeNode : public PxShape2dProtocol {
public:
    ShapeNode(PxNode::Init const& init, RCShdPtr<HostValue> const& observedValue)
        : PxNode(init), value(observedValue)
    {
    }

    PxValueResult<RCPvtEngPtr<PmShape2d>> evaluate(PxTimeContext const& context) const override
    {
        auto const state = value->getState();
        auto const points = std::get<Animated<CurvePoints>>(*state).evaluate(context.getTime());
        return {makeShared<ShapeAtTime>(points.getValue()), points.getValidity()};
    }

private:
    RCShdPtr<HostValue> value;
};

template <typename Node>
PxStrongHndl<> make(RCShdPtr<HostValue> const& value)
{
    return PxStrongHndl<>(makeNode<Node>(value).get());
}

/// Makes the node that fits the kind of value.
struct NodeMaker {
    RCShdPtr<HostValue> const& value;

    template <typename T>
    PxStrongHndl<> operator()(Animated<T> const&) const
    {
        return make<ValueNode<T>>(value);
    }
    PxStrongHndl<> operator()(Animated<CurvePoints> const&) const { return make<ShapeNode>(value); }
    PxStrongHndl<> operator()(Vector<double> const&) const { return {}; }
};

} // namespace

PxStrongHndl<> makeValueNode(RCShdPtr<HostValue> const& value)
{
    return std::visit(NodeMaker{value}, *value->getState());
}
