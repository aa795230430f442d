// A tool library whose package registers a build and then fails to start.

#include "base/HostException.h"
#include "base/InBuildInfo.h"
#include "base/InPackageInit.h"

namespace {

class FailingBuild : public InBuildInfo {
public:
    char const* getProductLine() const override { return ""; }
    char const* getLibraryName() const override { return ""; }
    char const* getYear() const override { return ""; }
    char const* getVersion() const override { return ""; }
    char const* getReleaseStage() const override { return ""; }
    int getMajorVersion() const override { return 0; }
    int getMinorVersion() const override { return 0; }
    int getReleaseCode() const override { return 0; }
    char const* getBuildNumber() const override { return ""; }
    char const* getBuildDate() const override { return ""; }
    char const* getConfiguration() const override { return ""; }
};

class FailingPackage : public InPackageInit {
public:
    FailingPackage() : InPackageInit("failingTool") { registerPackage(); }
    void startUp() override
    {
        InBuildInfoUtil::registerInfo(makeOwned<FailingBuild>());
        throw HostException("no licence to start");
    }
};

FailingPackage const package;

} // namespace
