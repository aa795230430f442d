// The module for files other than EXR. It is loaded on first use because its library costs every
// start more time and memory than an EXR picture does.

#include "media/OiioModule.h"

#include "files/ProgramModule.h"

#include <atomic>
#include <mutex>
#include <string>

namespace {

std::mutex loading;
std::atomic<OiioModule*> loadedModule = nullptr;

} // namespace

OiioModule& loadOiioModule()
{
    std::lock_guard const lock(loading);
    if (loadedModule == nullptr) {
        try {
            void* const function = loadModuleFunction("libremapMediaOiio.so", oiioModuleFunction);
            loadedModule = reinterpret_cast<OiioModuleFunction>(function)(StandardFiles::get());
        } catch (ModuleError const& error) {
            throw ImageFileError(ImageFailure::Surroundings,
                                 std::string("files other than EXR cannot be processed: ") +
                                     error.what());
        }
    }
    return *loadedModule;
}

OiioModule* findOiioModule()
{
    return loadedModule;
}
