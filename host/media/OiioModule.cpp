// Finding and loading the module for files other than EXR. It is loaded on first use because its
// library costs every start more time and memory than an EXR picture does.

#include "media/OiioModule.h"

#include <dlfcn.h>
#include <string>
#include <vector>

namespace {

constexpr char const* moduleFileName = "libremapMediaOiio.so";

OiioModule* loadedModule = nullptr; // main thread only

/// The folders beside which the module may have been put.
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

std::filesystem::path findModuleFile()
{
    for (std::filesystem::path const& home : homeFolders()) {
        for (char const* const place : {"", "../lib", "../" REMAPCOLOR_LIBRARY_FOLDER}) {
            std::filesystem::path const file = home / place / moduleFileName;
            std::error_code ignored;
            if (!home.empty() && std::filesystem::exists(file, ignored)) {
                return file;
            }
        }
    }
    throw ImageFileError(ImageFailure::Surroundings,
                         std::string("files other than EXR need \"") + moduleFileName +
                             "\", which is not beside the program; install it again");
}

} // namespace

OiioModule& loadOiioModule()
{
    if (loadedModule != nullptr) {
        return *loadedModule;
    }
    std::filesystem::path const file = findModuleFile();
    void* const library = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const function = library == nullptr ? nullptr : ::dlsym(library, oiioModuleFunction);
    if (function == nullptr) {
        char const* const reason = ::dlerror();
        throw ImageFileError(ImageFailure::Surroundings,
                             "files other than EXR cannot be processed: " +
                                 std::string(reason == nullptr ? "no reason known" : reason));
    }
    loadedModule = reinterpret_cast<OiioModuleFunction>(function)();
    return *loadedModule;
}

OiioModule* findOiioModule()
{
    return loadedModule;
}
