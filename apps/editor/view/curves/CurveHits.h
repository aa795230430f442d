#pragma once

#include "editor/model/curves/CurveModel.h"

#include <QPointF>
#include <QRectF>
#include <optional>

/// A key, or one of its handles.
struct CurveGrip {
    CurveEditor::Key key;
    std::optional<CurveEditing::Side> handle{}; ///< empty for the key itself

    bool operator==(CurveGrip const&) const = default;
};

/// Where keys, handles and curves of a graph are, and which of them is at a place.
class CurveHits {
public:
    /// Both live longer.
    CurveHits(CurveModel const& shownModel, CurveScale const& shownScale)
        : model(shownModel), scale(shownScale)
    {
    }

    QPointF toPlace(GePoint2<float> const& point) const;
    QPointF placeKey(CurveEditor::Key const& key) const;

    /// Where a handle counts; of one beyond the graph, whose key is within, where its line meets
    /// the edge: there it can be had.
    QPointF placeHandle(CurveEditor::Key const& key, CurveEditing::Side side) const;

    /// Keys of edited curves, and the handles of the only selected one; the nearest.
    std::optional<CurveGrip> findGrip(QPointF const& place) const;

    /// An edited curve.
    std::optional<int> findCurve(QPointF const& place) const;

    /// Which mark's colour is there.
    std::optional<CurveMark> findMark(QPointF const& place) const;

    /// Where a colour is on each channel's curve: at what the transfer makes of it.
    std::array<QPointF, 3> placeMark(CurveMark const& mark) const;

private:
    double measureCurve(int channel, QPointF const& place) const;
    QRectF getInside() const;

    CurveModel const& model;
    CurveScale const& scale;
};
