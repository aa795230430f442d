#pragma once

#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

class InVariableBase;

/// A package of code that the host starts and shuts down in the order of dependencies. One global
/// object per package; its construction at load announces it. User-interface thread.
class InPackageInit {
public:
    explicit InPackageInit(std::string packageName);
    InPackageInit(InPackageInit const&) = delete;
    InPackageInit& operator=(InPackageInit const&) = delete;

    /// Takes the package out of the registry.
    virtual ~InPackageInit();

    /// Dependencies on single variables: our host has no such variables and ignores them.
    virtual void addDependency(InVariableBase* variable);
    virtual void removeDependency(InVariableBase* variable);

    virtual std::string getName() const { return name; }

    /// Before and after the dependencies are started. Our host starts packages one by one and calls
    /// both just before startUp.
    virtual void beforeDependencies();
    virtual void afterDependencies();

    virtual void startUp();
    virtual void shutDown();

    /// Whether the process has a user in front of it; called once before startUp.
    virtual void setInteractive(bool interactive);

    /// Announces the package to the host. Never fails: it runs while a library is being loaded. A
    /// package whose name is taken is refused when it is to be started.
    void registerPackage();

    /// The package with that type record is started before this one.
    void addDependency(std::type_info const* packageType);

    std::vector<std::type_info const*> const& getDependencies() const { return dependencies; }

private:
    std::string name;
    std::vector<std::type_info const*> dependencies;
};

/// A package known by its tag type.
template <typename Tag>
class InInit : public InPackageInit {
public:
    /// Announces the package.
    explicit InInit(std::string packageName);

    static std::type_info const& getType();

    /// Lets go of what other packages have registered with this one: they are all shut down.
    void shutDown() override;
};

template <typename Tag>
InInit<Tag>::InInit(std::string packageName) : InPackageInit(std::move(packageName))
{
    registerPackage();
}

template <typename Tag>
std::type_info const& InInit<Tag>::getType()
{
    return typeid(InInit);
}

template <typename Tag>
void InInit<Tag>::shutDown()
{
}

/// Tags of the host's own packages.
namespace VxInit {
struct base;
struct primitives;
struct pluginAPI;
struct internalAPI;
struct framework;
struct resmgt;
} // namespace VxInit

// These keep what plug-ins register: builds and tools.
template <>
void InInit<VxInit::base>::shutDown();
template <>
void InInit<VxInit::pluginAPI>::shutDown();

// Each lies in the library of its name: whoever depends on the package needs the library.
extern template class InInit<VxInit::base>;
extern template class InInit<VxInit::primitives>;
extern template class InInit<VxInit::pluginAPI>;
extern template class InInit<VxInit::internalAPI>;
extern template class InInit<VxInit::framework>;
extern template class InInit<VxInit::resmgt>;

/// All packages of the process, in the order of their registration.
class InPackageRegistry {
public:
    static InPackageRegistry& getInstance();

    /// Starts every package that is not running, dependencies first. Throws the assertion failure
    /// for a name that is taken (that package is forgotten), a missing dependency or a cycle, and
    /// what a package's start-up throws; packages started before that keep running.
    void startPackages(bool interactive);

    /// Shuts the running packages down, last started first.
    void shutDownPackages();

    /// The first package of that name; null when there is none.
    InPackageInit* find(std::string const& packageName) const;
    bool isRunning(InPackageInit const& package) const;

    /// Whether startPackages would start any.
    bool hasPackageToStart() const { return running.size() < packages.size(); }

private:
    friend class InPackageInit;

    void start(InPackageInit& package, bool interactive, std::vector<InPackageInit*>& underWay);

    std::vector<InPackageInit*> packages;
    std::vector<InPackageInit*> running; // in the order of their start
};
