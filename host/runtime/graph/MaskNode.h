#pragma once

#include "pluginAPI/IxPixelFormat.h"
#include "pluginAPI/PxImageProtocol.h"
#include "pluginAPI/PxNodeHandles.h"
#include "primitives/CoColor.h"
#include "runtime/graph/MaskUse.h"

/// The chain, blended with the source after it:
///
///   result = (1 - share) * source + share * processed     share = mask * mix
///
/// `mix` (a double value node, 0 to 1) is read at each request's time. `mask` is what maskShareOf
/// makes of the mask picture's pixel, which is 0 outside of its pixels; it is 1 everywhere where
/// `mask` is empty. A share of 0 gives the source's
/// values, 1 the chain's, exactly; alpha is always the chain's. Without a mask and at a mix of 1
/// the chain's result is handed on as it is. User-interface thread.
PxStrongHndl<PxNode const> addMask(PxNodePtr<PxNode const> const& chain, PxStrongHndl<> const& mix,
                                   PxNodePtr<PxImageProtocol const> const& source,
                                   PxNodePtr<PxImageProtocol const> const& mask);

/// The share of a mask's pixel: its alpha, or its first channel where `components` have none,
/// limited to 0 to 1, NaN being 0; 1 minus that where `use` says so. Any thread.
float maskShareOf(CoRgbaColorTyped<float> const& pixel, IxPixelFormat::Components components,
                  MaskUse use);

/// One pixel of that blend. `share` is from 0 to 1. Any thread.
CoRgbaColorTyped<float> blendPixel(CoRgbaColorTyped<float> const& source,
                                   CoRgbaColorTyped<float> const& processed, float share);
