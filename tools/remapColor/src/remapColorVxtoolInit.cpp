// The library as a package of the host: what it depends on, what it registers when it is started.

#include "remapColorVxtoolInit.h"

#include "base/InBuildInfo.h"
#include "remapColorController.h"
#include "remapColorDescription.h"
#include "remapColorEXRMode.h"
#include "remapColorLinearMode.h"

namespace {

constexpr int devRelease = 3;
constexpr std::size_t nbDefaultCurvePoints = 9;

bool isInteractive = false; // kept for the host; nothing here reads it

class LibraryBuildInfo : public InBuildInfo {
public:
    char const* getProductLine() const override { return "Vantorix Morvo Library"; }
    char const* getLibraryName() const override { return "libVxremapColorVxtool"; }
    char const* getYear() const override { return "2013"; }
    char const* getVersion() const override { return "8.0"; }
    char const* getReleaseStage() const override
    {
        return getReleaseCode() == devRelease ? "dev" : "";
    }
    int getMajorVersion() const override { return 8; }
    int getMinorVersion() const override { return 0; }
    int getReleaseCode() const override { return 42; }
    char const* getBuildNumber() const override { return "2600"; }
    char const* getBuildDate() const override { return "Jun 12 2012"; }
    char const* getConfiguration() const override { return "opt.x86_64.intel"; }
};

} // namespace

InInit<VxInit::remapColorVxtool>::InInit() : InPackageInit("remapColorVxtool")
{
    registerPackage();
    InPackageInit::addDependency(&InInit<VxInit::framework>::getType());
    InPackageInit::addDependency(&InInit<VxInit::internalAPI>::getType());
    InPackageInit::addDependency(&InInit<VxInit::primitives>::getType());
    InPackageInit::addDependency(&InInit<VxInit::resmgt>::getType());
    InPackageInit::addDependency(&InInit<VxInit::pluginAPI>::getType());
    InPackageInit::addDependency(&InInit<VxInit::base>::getType());
}

std::type_info const& InInit<VxInit::remapColorVxtool>::getType()
{
    return typeid(InInit);
}

void InInit<VxInit::remapColorVxtool>::beforeDependencies() {}

void InInit<VxInit::remapColorVxtool>::afterDependencies() {}

void InInit<VxInit::remapColorVxtool>::startUp()
{
    InBuildInfoUtil::registerInfo(makeOwned<LibraryBuildInfo>());
    RemapColorController::registerModeFactory(makeShared<RemapColorLinearMode>(), 0);
    RemapColorController::registerModeFactory(makeShared<RemapColorEXRMode>(), 1);
    PiImageModifier::registerTool(createRemapColorProtocol());
    Vector<GePoint2<float>>& points = RemapColorController::getDefaultCurvePoints();
    points.clear(); // of an earlier start
    points.reserve(nbDefaultCurvePoints);
    RemapColorController::fillDefaultCurvePoints(points);
}

void InInit<VxInit::remapColorVxtool>::shutDown()
{
    RemapColorController::clearInstanceDataFactories();
}

void InInit<VxInit::remapColorVxtool>::setInteractive(bool interactive)
{
    isInteractive = interactive;
}

namespace {

InInit<VxInit::remapColorVxtool> const package;

} // namespace
