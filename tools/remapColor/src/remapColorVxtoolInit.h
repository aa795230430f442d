#pragma once

#include "base/InPackageInit.h"
#include "remapColorExport.h"

namespace VxInit {
struct remapColorVxtool;
} // namespace VxInit

/// The package "remapColorVxtool": announced at load; started, it registers the build information,
/// the two modes and the tool, and fills the default curve.
template <>
class InInit<VxInit::remapColorVxtool>;
