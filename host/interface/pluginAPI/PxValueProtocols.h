#pragma once

#include "base/RCShdPtr.h"
#include "pluginAPI/PxNode.h"
#include "pluginAPI/PxResult.h"
#include "pluginAPI/PxTimeContext.h"
#include "primitives/PmShape2d.h"

/// Delivers an input's value over time. Evaluated on worker threads, several at once.
template <typename T>
class PxAnimValueProtocol : public virtual PxNode {
public:
    virtual PxValueResult<T> evaluate(PxTimeContext const& context) const = 0;

protected:
    PxAnimValueProtocol() : PxNode(Init()) {}
};

/// Delivers a drawn shape over time. Evaluated on worker threads, several at once.
class PxShape2dProtocol : public virtual PxNode {
public:
    virtual PxValueResult<RCPvtEngPtr<PmShape2d>> evaluate(PxTimeContext const& context) const = 0;

protected:
    PxShape2dProtocol() : PxNode(Init()) {}
};
