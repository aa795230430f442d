// Packages: announced when their library is loaded, started and shut down in order.

#include "base/InPackageInit.h"

#include "base/Assertions.h"
#include "base/InBuildInfo.h"

#include <algorithm>
#include <utility>

namespace {

std::vector<std::unique_ptr<InBuildInfo>>& buildInfos()
{
    static std::vector<std::unique_ptr<InBuildInfo>> infos;
    return infos;
}

bool contains(std::vector<InPackageInit*> const& list, InPackageInit const& package)
{
    return std::find(list.begin(), list.end(), &package) != list.end();
}

} // namespace

void InBuildInfoUtil::registerInfo(OPtr<InBuildInfo> info)
{
    if (info.isNull()) {
        RCExUtil::throwExNullPtr(typeid(InBuildInfo));
    }
    buildInfos().emplace_back(info.release());
}

std::vector<std::unique_ptr<InBuildInfo>> const& InBuildInfoUtil::getInfos()
{
    return buildInfos();
}

void InBuildInfoUtil::keepFirst(std::size_t count)
{
    buildInfos().resize(std::min(count, buildInfos().size()));
}

InPackageInit::InPackageInit(std::string packageName) : name(std::move(packageName)) {}

InPackageInit::~InPackageInit()
{
    InPackageRegistry& registry = InPackageRegistry::getInstance();
    std::erase(registry.packages, this);
    std::erase(registry.running, this);
}

void InPackageInit::addDependency(InVariableBase*) {}

void InPackageInit::removeDependency(InVariableBase*) {}

void InPackageInit::beforeDependencies() {}

void InPackageInit::afterDependencies() {}

void InPackageInit::startUp() {}

void InPackageInit::shutDown() {}

void InPackageInit::setInteractive(bool) {}

void InPackageInit::registerPackage()
{
    InPackageRegistry::getInstance().packages.push_back(this);
}

void InPackageInit::addDependency(std::type_info const* packageType)
{
    dependencies.push_back(packageType);
}

InPackageRegistry& InPackageRegistry::getInstance()
{
    static InPackageRegistry registry;
    return registry;
}

void InPackageRegistry::startPackages(bool interactive)
{
    std::vector<InPackageInit*> const announced = packages;
    std::vector<InPackageInit*> underWay;
    for (InPackageInit* const package : announced) {
        bool const isFirstOfItsName = find(package->getName()) == package;
        if (!isFirstOfItsName) {
            std::erase(packages, package); // its library may stay loaded
        }
        Assertions::check(isFirstOfItsName, "find(package->getName()) == package");
        start(*package, interactive, underWay);
    }
}

void InPackageRegistry::start(InPackageInit& package, bool interactive,
                              std::vector<InPackageInit*>& underWay)
{
    if (contains(running, package)) {
        return;
    }
    Assertions::check(!contains(underWay, package), "!contains(underWay, package)");
    underWay.push_back(&package);
    for (std::type_info const* const wanted : package.getDependencies()) {
        auto const found =
            std::find_if(packages.begin(), packages.end(),
                         [&](InPackageInit* candidate) { return typeid(*candidate) == *wanted; });
        Assertions::check(found != packages.end(), "found != packages.end()");
        start(**found, interactive, underWay);
    }
    package.beforeDependencies();
    package.afterDependencies();
    package.setInteractive(interactive);
    package.startUp();
    running.push_back(&package);
}

void InPackageRegistry::shutDownPackages()
{
    while (!running.empty()) {
        InPackageInit* const package = running.back();
        running.pop_back();
        package->shutDown();
    }
}

InPackageInit* InPackageRegistry::find(std::string const& packageName) const
{
    auto const found = std::find_if(packages.begin(), packages.end(), [&](InPackageInit* package) {
        return package->getName() == packageName;
    });
    return found == packages.end() ? nullptr : *found;
}

bool InPackageRegistry::isRunning(InPackageInit const& package) const
{
    return contains(running, package);
}
