#include "pluginAPI/PiUndo.h"

namespace {

int nbNoLogGuards = 0; // user-interface thread only

} // namespace

PiUndoGuard::PiUndoGuard(RCShdPtr<PiCommandStack> const& commandStack, std::string const& label,
                         PiExecParam const&)
    : stack(commandStack)
{
    stack->beginCommand(label);
}

PiUndoGuard::~PiUndoGuard()
{
    stack->endCommand();
}

PiUndoGuardNoLog::PiUndoGuardNoLog(bool)
{
    ++nbNoLogGuards;
}

PiUndoGuardNoLog::~PiUndoGuardNoLog()
{
    --nbNoLogGuards;
}

bool PiUndoGuardNoLog::isActive()
{
    return nbNoLogGuards > 0;
}
