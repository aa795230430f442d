#pragma once

#include "base/RCShdPtr.h"
#include "pluginAPI/PiValue.h"

/// A controller that wants to know of changes to its node's values.
class PiValueChangeInterface {
public:
    virtual ~PiValueChangeInterface() noexcept(false) = default;

    /// Called on the user-interface thread after `value` has changed.
    virtual void valueChanged(RCShdPtr<PiValue> const& value) = 0;
};
