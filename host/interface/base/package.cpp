// Announces the library as a package that others can depend on.

#include "base/InBuildInfo.h"
#include "base/InPackageInit.h"

template <>
void InInit<VxInit::base>::shutDown()
{
    InBuildInfoUtil::keepFirst(0);
}

template class InInit<VxInit::base>;

namespace {

InInit<VxInit::base> const package("base");

} // namespace
