#pragma once

#include "base/InPackageInit.h"
#include "remapColorExport.h"

namespace VxInit {
struct remapColorVxtool;
} // namespace VxInit

/// The package "remapColorVxtool": announced at load; started, it registers the build information,
/// the two modes and the tool, and fills the default curve. It may be started again after it was
/// shut down. Packages of code that uses the controller depend on it by its type record.
template <>
class InInit<VxInit::remapColorVxtool> : public InPackageInit {
public:
    InInit();

    REMAPCOLOR_EXPORT static std::type_info const& getType();

    void beforeDependencies() override;
    void afterDependencies() override;
    void startUp() override;
    void shutDown() override;
    void setInteractive(bool interactive) override;
};
