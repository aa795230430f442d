#include "runtime/loader/ToolLoader.h"

#include "base/EvEventManager.h"
#include "base/InBuildInfo.h"
#include "base/InPackageInit.h"
#include "pluginAPI/PxRequestMgr.h"

#include <cstdlib>
#include <dlfcn.h>
#include <sstream>

namespace {

constexpr bool runsForAUser = true;

/// The linker has no codes for what is not the library's fault.
std::string explainLinkerError(std::string const& message)
{
    for (char const* const lack : {"failed to map segment", "annot allocate", "out of memory",
                                   "annot create shared object", "cannot map zero-fill"}) {
        if (message.find(lack) != std::string::npos) {
            return "out of memory; close other programs (" + message + ")";
        }
    }
    if (message.find("oo many open files") != std::string::npos) {
        return "too few file descriptors; raise the limit, as by ulimit -n (" + message + ")";
    }
    return message;
}

/// The dynamic linker's message without the path that it starts with.
std::string takeLinkerError(std::filesystem::path const& library)
{
    char const* const text = dlerror();
    std::string message = text == nullptr ? "unknown reason" : text;
    std::string const prefix = library.string() + ": ";
    if (message.starts_with(prefix)) {
        message.erase(0, prefix.size());
    }
    return explainLinkerError(message);
}

std::filesystem::path getProgramFolder()
{
    std::error_code failure;
    return std::filesystem::read_symlink("/proc/self/exe", failure).parent_path();
}

/// Can let go of what a library has registered since this object was made.
class RegistrationsSince {
public:
    RegistrationsSince()
        : nbTools(PiToolRegistry::getInstance().getTools().size()),
          nbBuilds(InBuildInfoUtil::getInfos().size())
    {
    }
    void takeBack() const
    {
        PiToolRegistry::getInstance().keepFirst(nbTools);
        InBuildInfoUtil::keepFirst(nbBuilds);
    }

private:
    std::size_t nbTools;
    std::size_t nbBuilds;
};

} // namespace

ToolLoader::ToolLoader()
{
    InPackageRegistry::getInstance().startPackages(runsForAUser);
}

ToolLoader::~ToolLoader()
{
    PxRequestMgr::getInstance().shutDown();
    EvEventManager::getInstance().discardEvents();
    InPackageRegistry::getInstance().shutDownPackages();
    while (!libraries.empty()) {
        libraries.pop_back();
    }
}

void ToolLoader::load(std::filesystem::path const& library)
{
    auto const fail = [&](std::string const& why) {
        throw ToolLoadError("cannot use the tool library " + library.string() + ": " + why);
    };
    RegistrationsSince const registrations;
    std::unique_ptr<void, Close> handle(dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (handle == nullptr) {
        fail(takeLinkerError(library));
    }
    if (!InPackageRegistry::getInstance().hasPackageToStart()) {
        fail("it announces no package to the host");
    }
    try {
        InPackageRegistry::getInstance().startPackages(runsForAUser);
    } catch (std::exception const& error) {
        registrations.takeBack();
        fail(std::string("its package does not start: ") + error.what());
    }
    libraries.push_back(std::move(handle));
}

void ToolLoader::find(std::string const& fileName)
{
    load(findToolFolder(fileName) / fileName);
}

PiToolProtocol const& ToolLoader::getTool(std::string const& name) const
{
    PiToolProtocol const* const tool = PiToolRegistry::getInstance().find(name);
    if (tool == nullptr) {
        throw ToolLoadError("no loaded library offers the tool \"" + name + "\"");
    }
    return *tool;
}

void ToolLoader::Close::operator()(void* library) const
{
    dlclose(library);
}

std::vector<std::filesystem::path> getToolFolders()
{
    std::vector<std::filesystem::path> folders;
    if (char const* const given = std::getenv("VX_TOOL_PATH")) {
        std::istringstream list(given);
        for (std::string folder; std::getline(list, folder, ':');) {
            if (!folder.empty()) {
                folders.emplace_back(folder);
            }
        }
    }
    std::filesystem::path const program = getProgramFolder();
    folders.push_back(program);
    folders.push_back((program / ".." / "lib" / "vxtools").lexically_normal());
    return folders;
}

std::filesystem::path findToolFolder(std::string const& fileName)
{
    std::string searched;
    for (std::filesystem::path const& folder : getToolFolders()) {
        std::error_code failure;
        if (std::filesystem::is_regular_file(folder / fileName, failure)) {
            return folder;
        }
        searched += (searched.empty() ? "" : ", ") + folder.string();
    }
    throw ToolLoadError("cannot find the tool library " + fileName + " in " + searched +
                        "; set VX_TOOL_PATH to its folder");
}
