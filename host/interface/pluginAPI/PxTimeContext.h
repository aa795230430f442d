#pragma once

/// The moment at which values are wanted. One unit is one frame.
class PxTimeContext {
public:
    explicit PxTimeContext(double evaluationTime) : time(evaluationTime) {}
    double getTime() const { return time; }

private:
    double time;
};
