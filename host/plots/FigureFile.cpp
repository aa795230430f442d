#include "plots/FigureFile.h"

#include "files/ProgramModule.h"

std::string drawFigure(Figure const& figure, FigureFormat format)
{
    std::string bytes;
    try {
        void* const function = loadModuleFunction("libremapPlotsCairo.so", figureFunctionName);
        reinterpret_cast<FigureFunction>(function)(figure, format, bytes);
    } catch (ModuleError const& error) {
        throw FigureError(error.what());
    }
    return bytes;
}
