#pragma once

#include "base/HostException.h"
#include "base/RCShdPtr.h"
#include "pluginAPI/PiInputPolicy.h"
#include "pluginAPI/PiValue.h"
#include "runtime/values/Animated.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <variant>

/// Everything that a value of a node can be.
using ValueState = std::variant<Animated<bool>, Animated<int>, Animated<double>,
                                Animated<CurvePoints>, Vector<double>>;

/// A value that an input does not take. The text names the input and what it takes.
class ValueError : public HostException {
public:
    using HostException::HostException;
};

/// Told of every change of a value, before and after it happens.
class ValueObserver {
public:
    virtual ~ValueObserver() noexcept(false) = default;

    /// `value` now has another state than `before`. User-interface thread.
    virtual void valueChanged(class HostValue& value, ValueState const& before) = 0;
};

/// A value that the host keeps for a node. Changed on the user-interface thread; any thread may
/// take a snapshot of its state.
class HostValue : public virtual PiValue {
public:
    /// `observer` may be null; otherwise it lives until forgetObserver is called. The initial state
    /// decides what kind of value it is for good; `policy` may be empty and must accept the initial
    /// state.
    HostValue(std::string fullName, ValueState initial, RCShdPtr<PiInputPolicy const> inputPolicy,
              ValueObserver* valueObserver);

    std::string getName() const override { return name; }
    RCShdPtr<PiInputPolicy const> const& getPolicy() const { return policy; }

    /// The state at this moment, which never changes afterwards. Any thread.
    std::shared_ptr<ValueState const> getState() const;

    /// Takes `state` over, and tells the observer if it differs. Throws ValueError, having changed
    /// nothing, for another kind of value and for what the policy does not allow.
    void setState(ValueState state);

    /// Nobody is told of changes any more: the observer is about to go.
    void forgetObserver() { observer = nullptr; }

    /// Throws what setState would throw.
    void check(ValueState const& candidate) const;

private:
    std::string name;
    RCShdPtr<PiInputPolicy const> policy;
    ValueObserver* observer;
    mutable std::mutex mutex;
    std::shared_ptr<ValueState const> current; // locked by mutex; what it points to never changes
};

/// A boolean, integer or double as plug-ins see it.
template <typename T>
class HostTypedValue : public HostValue, public PiTypedValue<T> {
public:
    HostTypedValue(std::string fullName, T initial, RCShdPtr<PiInputPolicy const> inputPolicy,
                   ValueObserver* valueObserver)
        : HostValue(std::move(fullName), Animated<T>(initial), std::move(inputPolicy),
                    valueObserver)
    {
    }

    void setValue(T const& value) override { setState(Animated<T>(value)); }
    T getValue() const override
    {
        return std::get<Animated<T>>(*getState()).evaluate(0.0).getValue();
    }
};

/// A list of doubles as plug-ins see it.
class HostArrayValue : public HostValue, public PiTypedValueArray<double> {
public:
    HostArrayValue(std::string fullName, ValueObserver* valueObserver)
        : HostValue(std::move(fullName), Vector<double>(), {}, valueObserver)
    {
    }

    void setValue(Vector<double> const& values) override { setState(values); }
    Vector<double> getValue() const override { return std::get<Vector<double>>(*getState()); }
};

/// The numbers that an input takes, with or without a range: "-10 to 10", "any finite number".
/// Tools write the 32-bit integers' limits for no bound: at or beyond them there is none.
std::string describeRange(PiInputPolicy const* policy);
