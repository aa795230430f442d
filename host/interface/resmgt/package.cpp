// Announces the library as a package that others can depend on.

#include "base/InPackageInit.h"

template class InInit<VxInit::resmgt>;

namespace {

InInit<VxInit::resmgt> const package("resmgt");

} // namespace
