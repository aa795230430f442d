#include "editor/model/picture/DisplayConfig.h"

#include "files/ProgramModule.h"

std::shared_ptr<DisplayConfig const> readDisplayConfig(std::string const& file)
{
    std::shared_ptr<DisplayConfig const> config;
    try {
        void* const function = loadModuleFunction("libremapDisplays.so", displayConfigFunctionName);
        reinterpret_cast<DisplayConfigFunction>(function)(file, config);
    } catch (ModuleError const& error) {
        throw DisplayError(error.what());
    }
    return config;
}
