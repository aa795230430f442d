#pragma once

#include <algorithm>
#include <limits>

/// Closed range of times over which a result stays the same.
class PxValidityInterval {
public:
    PxValidityInterval(double startTime, double endTime) : start(startTime), end(endTime) {}

    /// All of time: the validity of what never changes.
    static PxValidityInterval getFull()
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        return {-infinity, infinity};
    }

    double getStart() const { return start; }
    double getEnd() const { return end; }

    /// Keeps the later start and the earlier end.
    void narrow(PxValidityInterval const& other)
    {
        start = std::max(start, other.start);
        end = std::min(end, other.end);
    }
    bool operator==(PxValidityInterval const&) const = default;

private:
    double start;
    double end;
};
