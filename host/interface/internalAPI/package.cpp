// Announces the library as a package that others can depend on.

#include "base/InPackageInit.h"

template class InInit<VxInit::internalAPI>;

namespace {

InInit<VxInit::internalAPI> const package("internalAPI");

} // namespace
