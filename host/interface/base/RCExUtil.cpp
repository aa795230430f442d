#include "base/RCExUtil.h"

#include "base/HostException.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>

std::string RCExUtil::readableName(std::type_info const& type)
{
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> const name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return status == 0 ? name.get() : type.name();
}

void RCExUtil::throwExNullPtr(std::type_info const& type)
{
    throw NullPointerException("Null pointer: " + readableName(type));
}

void RCExUtil::throwExCastFailed(std::type_info const& actual, std::type_info const& wanted)
{
    throw CastFailedException("Cast failed: from " + readableName(actual) + " to " +
                              readableName(wanted));
}
