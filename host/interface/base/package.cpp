// Announces the library as a package that others can depend on.

#include "base/InPackageInit.h"

template class InInit<VxInit::base>;

namespace {

InInit<VxInit::base> const package("base");

} // namespace
