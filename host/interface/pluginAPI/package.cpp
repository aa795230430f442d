// Announces the library as a package that others can depend on.

#include "base/InPackageInit.h"
#include "pluginAPI/PiToolProtocol.h"

template <>
void InInit<VxInit::pluginAPI>::shutDown()
{
    PiToolRegistry::getInstance().keepFirst(0);
}

template class InInit<VxInit::pluginAPI>;

namespace {

InInit<VxInit::pluginAPI> const package("pluginAPI");

} // namespace
