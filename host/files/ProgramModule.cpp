#include "files/ProgramModule.h"

#include <dlfcn.h>
#include <filesystem>
#include <vector>

namespace {

/// The folders beside which modules may have been put.
std::vector<std::filesystem::path> homeFolders()
{
    std::vector<std::filesystem::path> folders;
    Dl_info library{};
    if (::dladdr(reinterpret_cast<void const*>(&homeFolders), &library) != 0 &&
        library.dli_fname != nullptr) {
        std::error_code ignored;
        folders.push_back(std::filesystem::canonical(library.dli_fname, ignored).parent_path());
    }
    std::error_code ignored;
    folders.push_back(std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path());
    return folders;
}

std::filesystem::path findModuleFile(std::string const& fileName)
{
    for (std::filesystem::path const& home : homeFolders()) {
        for (char const* const place : {"", "../lib", "../" REMAPCOLOR_LIBRARY_FOLDER}) {
            std::filesystem::path const file = home / place / fileName;
            std::error_code ignored;
            if (!home.empty() && std::filesystem::exists(file, ignored)) {
                return file;
            }
        }
    }
    throw ModuleError("\"" + fileName + "\" is not beside the program; install it again");
}

} // namespace

void* loadModuleFunction(std::string const& fileName, char const* function)
{
    std::filesystem::path const file = findModuleFile(fileName);
    void* const library = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
    void* const found = library == nullptr ? nullptr : ::dlsym(library, function);
    if (found == nullptr) {
        char const* const reason = ::dlerror();
        throw ModuleError(reason == nullptr ? "no reason known" : reason);
    }
    return found;
}
