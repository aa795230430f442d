#pragma once

#include "base/RCShdPtr.h"
#include "pluginAPI/PiValue.h"

/// Whether an empty value is an error when a view is made.
enum class CheckNull { No = 0, Yes = 1 };

/// A view of a value as a `Typed`. Unbound views and, if asked to check, views of an empty value
/// throw the null-pointer exception naming `Typed`; a value of another type throws the cast
/// failure. User-interface thread.
template <typename Typed>
class PiValueView {
public:
    PiValueView() = default;
    PiValueView(RCShdPtr<PiValue> const& value, CheckNull check) : typed(castShared<Typed>(value))
    {
        if (check == CheckNull::Yes) {
            *typed;
        }
    }
    Typed* operator->() const { return &*typed; }

private:
    RCShdPtr<Typed> typed;
};

template <typename T>
using PiTypedValueUtil = PiValueView<PiTypedValue<T>>;
template <typename T>
using PiConstTypedValueUtil = PiValueView<PiTypedValue<T> const>;
template <typename T>
using PiTypedValueArrayUtil = PiValueView<PiTypedValueArray<T>>;
template <typename T>
using PiConstTypedValueArrayUtil = PiValueView<PiTypedValueArray<T> const>;
