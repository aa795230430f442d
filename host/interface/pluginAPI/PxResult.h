#pragma once

#include "pluginAPI/PxValidityInterval.h"

#include <utility>

/// What every evaluation gives: how long its outcome stays true.
class PxBaseResult {
public:
    explicit PxBaseResult(PxValidityInterval const& resultValidity) : validity(resultValidity) {}
    PxValidityInterval const& getValidity() const { return validity; }

private:
    PxValidityInterval validity;
};

/// A value at a moment.
template <typename T>
class PxValueResult : public PxBaseResult {
public:
    PxValueResult(T resultValue, PxValidityInterval const& resultValidity)
        : PxBaseResult(resultValidity), value(std::move(resultValue))
    {
    }
    T const& getValue() const { return value; }

private:
    T value;
};
