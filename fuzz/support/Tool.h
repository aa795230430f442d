#pragma once

#include "runtime/graph/HostGraph.h"
#include "runtime/loader/ToolLoader.h"

/// Loads libraries as a program does; they stay until the process ends.
inline ToolLoader& getLoader()
{
    static ToolLoader& loader = *new ToolLoader;
    return loader;
}

inline PiToolProtocol const& getTool()
{
    static PiToolProtocol const& tool = []() -> PiToolProtocol const& {
        getLoader().find("libVXremapColor.vxtool");
        return getLoader().getTool("Remap Color");
    }();
    return tool;
}
