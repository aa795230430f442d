// Announces the library as a package that others can depend on.

#include "base/InPackageInit.h"

template class InInit<VxInit::pluginAPI>;

namespace {

InInit<VxInit::pluginAPI> const package("pluginAPI");

} // namespace
