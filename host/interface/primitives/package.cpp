// Announces the library as a package that others can depend on.

#include "base/InPackageInit.h"

template class InInit<VxInit::primitives>;

namespace {

InInit<VxInit::primitives> const package("primitives");

} // namespace
