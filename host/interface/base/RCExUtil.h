#pragma once

#include <string>
#include <typeinfo>

/// Failures of handles. Any thread may call these.
class RCExUtil {
public:
    /// Throws NullPointerException naming `type`, the type expected behind the empty handle.
    [[noreturn]] static void throwExNullPtr(std::type_info const& type);

    /// Throws CastFailedException naming the object's own type and the wanted one.
    [[noreturn]] static void throwExCastFailed(std::type_info const& actual,
                                               std::type_info const& wanted);

    /// The type's name as it is written in source code.
    static std::string readableName(std::type_info const& type);
};
