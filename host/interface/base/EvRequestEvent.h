#pragma once

#include "base/OPtr.h"

#include <iosfwd>
#include <string>

/// Something to be done later on the user-interface thread; see EvEventManager. Made on any thread,
/// run and destroyed on the user-interface thread.
class EvRequestEvent {
public:
    EvRequestEvent() = default;
    EvRequestEvent(EvRequestEvent const&) = delete;
    EvRequestEvent& operator=(EvRequestEvent const&) = delete;

    // Members of derived classes may own node handles, whose release can throw.
    virtual ~EvRequestEvent() noexcept(false);

    /// The run-time type's name as written in source code.
    virtual std::string getTypeName() const;

    /// Writes one line for a log: the type's name.
    virtual void dump(std::ostream& out) const;

    /// Restores what `dump` wrote. Our events are never replayed: this reads nothing.
    virtual void read(std::istream& in);

    /// A second event that does the same, or an empty pointer (as here) if there can be only one.
    virtual OPtrRet<EvRequestEvent> clone() const;

    /// Does the work, once. What it throws is reported by the event manager.
    virtual void execute() = 0;
};
