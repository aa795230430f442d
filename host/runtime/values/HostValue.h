#pragma once

#include "base/HostException.h"
#include "base/RCShdPtr.h"
#include "callbacks/CbDispatcher.h"
#include "pluginAPI/PiInputPolicy.h"
#include "pluginAPI/PiValue.h"
#include "runtime/values/Animated.h"

#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <variant>

/// Everything that a value of a node can be. Two states are the same when their bits are: see
/// isSameState.
using ValueState = std::variant<Animated<bool>, Animated<int>, Animated<double>,
                                Animated<CurvePoints>, Vector<double>>;

/// Whether nothing distinguishes the two: 0 and -0 differ, a NaN is itself.
bool isSameState(ValueState const& a, ValueState const& b);

/// A value that an input does not take. The text names the input and what it takes.
class ValueError : public HostException {
public:
    using HostException::HostException;
};

class HostValue;
struct ValueChange;

using ValueHandler = CbHandler<ValueChange const>;

/// Whoever values belong to.
class ValueOwner {
public:
    virtual ~ValueOwner() noexcept(false) = default;

    /// `value` has been changed; nobody knows yet. Returns whether it is to be told.
    virtual bool recordChange(HostValue& value,
                              std::shared_ptr<ValueState const> const& before) = 0;

    /// The change's turn to be told, before the value's own handlers.
    virtual void tellChange(ValueChange const& change) = 0;
};

/// A value that the host keeps for a node. Changed on the user-interface thread; any thread may
/// take a snapshot of its state.
class HostValue : public virtual PiValue {
public:
    /// `valueOwner` may be null; otherwise it lives until forgetOwner is called. The initial state
    /// decides what kind of value it is for good; `policy` may be empty and must accept the initial
    /// state.
    HostValue(std::string fullName, ValueState initial, RCShdPtr<PiInputPolicy const> inputPolicy,
              ValueOwner* valueOwner);

    std::string getName() const override { return name; }
    RCShdPtr<PiInputPolicy const> const& getPolicy() const { return policy; }

    /// The state at this moment, which never changes afterwards. Any thread.
    std::shared_ptr<ValueState const> getState() const;

    /// Takes `state` over, and tells whom it concerns if it differs (see ValueChange.h). Throws
    /// ValueError, having changed nothing, for another kind of value and for what the policy does
    /// not allow.
    void setState(ValueState state);

    /// The same with a state that the value had before.
    void restore(std::shared_ptr<ValueState const> state);

    /// Subscribes to changes, until the handler leaves or dies, or the value goes.
    void addHandler(ValueHandler* handler) { handlers.addHandler(handler); }
    void removeHandler(ValueHandler* handler) { handlers.removeHandler(handler); }

    /// Tells the owner and the handlers. For the queue of changes.
    void tell(ValueChange const& change);

    /// The owner is about to go.
    void forgetOwner() { owner = nullptr; }

    /// Throws what setState would throw.
    void check(ValueState const& candidate) const;

    /// The same for what a person gives, who also means a curve with keys at two places or more,
    /// and a list of finite numbers that is as long as the value's own, if that is not empty.
    void checkGiven(ValueState const& candidate) const;

    /// From now on keyframes are refused: whoever reads the value has no time.
    void forbidKeyframes() { takesKeyframes = false; }

    /// Whether it may have keyframes.
    bool isAnimatable() const;

private:
    std::string name;
    RCShdPtr<PiInputPolicy const> policy;
    ValueOwner* owner;
    CbDispatcher<ValueChange const> handlers;
    bool takesKeyframes = true;
    mutable std::mutex mutex;
    std::shared_ptr<ValueState const> current; // locked by mutex; what it points to never changes
};

/// A boolean, integer or double as plug-ins see it.
template <typename T>
class HostTypedValue : public HostValue, public PiTypedValue<T> {
public:
    HostTypedValue(std::string fullName, T initial, RCShdPtr<PiInputPolicy const> inputPolicy,
                   ValueOwner* valueOwner)
        : HostValue(std::move(fullName), Animated<T>(initial), std::move(inputPolicy), valueOwner)
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
    HostArrayValue(std::string fullName, ValueOwner* valueOwner)
        : HostValue(std::move(fullName), Vector<double>(), {}, valueOwner)
    {
    }

    void setValue(Vector<double> const& values) override { setState(values); }
    Vector<double> getValue() const override { return std::get<Vector<double>>(*getState()); }
};

/// What a number may be.
struct NumberLimits {
    double minimum = -std::numeric_limits<double>::infinity();
    double maximum = std::numeric_limits<double>::infinity();
};

/// Tools write the 32-bit integers' limits for no bound: at or beyond them there is none.
NumberLimits findLimits(PiInputPolicy const* policy);

/// The numbers that an input takes, with or without a range: "-10 to 10", "any finite number".
std::string describeRange(PiInputPolicy const* policy);
