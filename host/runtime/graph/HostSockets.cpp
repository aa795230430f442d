#include "runtime/graph/HostSockets.h"

RCShdPtr<PiInput> HostStructuredInput::findMember(std::string const& memberName,
                                                  bool mustExist) const
{
    for (auto const& [candidate, input] : members) {
        if (candidate == memberName) {
            return input;
        }
    }
    if (mustExist) {
        throw UnknownNameError("the input \"" + name + "\" has no member \"" + memberName + "\"");
    }
    return {};
}
