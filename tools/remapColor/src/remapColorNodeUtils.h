#pragma once

#include "base/Assertions.h"
#include "pluginAPI/IxTile.h"
#include "pluginAPI/PxImageProtocol.h"
#include "pluginAPI/PxNodeHandles.h"
#include "pluginAPI/PxValueProtocols.h"

/// What the tool's processing nodes share. Worker threads.
namespace RemapColorNodeUtils {

inline constexpr char const* controllerSourceFile = "tools\\remapColor\\src\\remapColorController";

/// The value at `time`, with `validity` narrowed by how long it holds.
template <typename Protocol>
auto readValue(PxNodePtr<Protocol const> const& node, PxTimeContext const& time,
               PxValidityInterval& validity)
{
    auto const result = node->evaluate(time);
    validity.narrow(result.getValidity());
    return result.getValue();
}

/// The source's format in the depth that `outputDepth` chooses at time 0: the format of a picture
/// cannot be animated. A choice that does not exist aborts, naming `abortLine`.
PxImageFormat computeOutputFormat(PxNodePtr<PxImageProtocol const> const& source,
                                  PxNodePtr<PxAnimValueProtocol<int> const> const& outputDepth,
                                  int abortLine);

/// Whether rows go straight to a tile that is too large to be in the caches when it is read again.
bool isLargeFloatTile(IxTile const& tile);

} // namespace RemapColorNodeUtils
