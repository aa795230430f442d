#pragma once

#include "Instance.h"
#include "ToolNode.h"

/// Renders the window that `inArgs` asks for into the host's output image. Any thread, several at
/// once on one instance. Throws ValueError for curves that cannot be read, std::bad_alloc.
OfxStatus render(Instance& instance, ToolNodePool& nodes, OfxPropertySet* inArgs);

/// Whether rendering would give the source's own pixels, bit for bit.
bool isIdentity(Instance const& instance, OfxTime time);

/// Tells the host the depth of the output that the user chose. False where nothing was changed;
/// what the host refuses is said once.
bool chooseOutputDepth(Instance& instance, OfxPropertySet* outArgs);
