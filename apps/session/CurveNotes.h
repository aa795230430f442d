#pragma once

#include "runtime/graph/HostNode.h"

#include <string>
#include <vector>

/// A key that a curve's table misses, and what the curve gives there.
struct CurveMiss {
    GePoint2<float> key;
    float got;
    double time;
    float error;
};

/// The x of each key.
std::vector<float> listKeyPlaces(CurvePoints const& points);

/// The keys that get something else than their own y, by more than 0.001 or 1 %: the tool's tables
/// have evenly spread places, of which few fall to keys that lie close together beside a distant
/// one. `got` is what the tool's curve makes of each key's x.
std::vector<CurveMiss> findCurveMisses(CurvePoints const& points, std::vector<float> const& got,
                                       double time);

/// A sentence about at least one miss of the curve `name`.
std::string describeMisses(std::string const& name, std::vector<CurveMiss> const& misses,
                           bool isAnimated);

/// What the node's curves miss at these times: a sentence for each curve; one for all where they
/// are the same.
std::vector<std::string> findCurveNotes(HostNode const& node, std::vector<double> const& times);
