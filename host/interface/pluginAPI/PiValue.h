#pragma once

#include "base/RCBase.h"
#include "base/Vector.h"

#include <string>

/// A named value of a node: of one of its inputs, or one that the node only stores.
/// User-interface thread.
class PiValue : public RCBase<LkCounter<int>> {
public:
    /// The full name, such as "Linear.Gamma.Red".
    virtual std::string getName() const = 0;
};

/// A value of type T (bool, int, double). Writing makes it constant over time, records the change
/// with the undo guard that is open, and tells the node's controller if anything changed.
template <typename T>
class PiTypedValue : public virtual PiValue {
public:
    /// Throws the host's exception naming the range for a value that the input does not take.
    virtual void setValue(T const& value) = 0;

    /// The value; of an animated one, that at time 0.
    virtual T getValue() const = 0;
};

/// A list of values of type T.
template <typename T>
class PiTypedValueArray : public virtual PiValue {
public:
    virtual void setValue(Vector<T> const& values) = 0;
    virtual Vector<T> getValue() const = 0;
};
