// Announces the library as a package that others can depend on.

#include "base/InPackageInit.h"

template class InInit<VxInit::framework>;

namespace {

InInit<VxInit::framework> const package("framework");

} // namespace
