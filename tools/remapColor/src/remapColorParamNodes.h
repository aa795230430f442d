#pragma once

#include "pluginAPI/PxNodeHandles.h"
#include "pluginAPI/PxValueProtocols.h"
#include "remapColorNames.h"
#include "remapColorNodeUtils.h"

#include <array>

/// The value nodes of a mode's parameters, [parameter][channel]. Made and released on the
/// user-interface thread; workers read through it.
class RemapColorParamNodes {
public:
    template <typename T>
    using PerParam =
        std::array<std::array<T, RemapColorNames::nbChannels>, RemapColorNames::nbParams>;

    using Handles = PerParam<PxStrongHndl<>>;
    using Values = PerParam<float>;

    /// An empty handle stays empty. Throws the cast failure for a node that delivers no double.
    explicit RemapColorParamNodes(Handles const& valueNodes)
    {
        for (int param = 0; param < RemapColorNames::nbParams; ++param) {
            for (int channel = 0; channel < RemapColorNames::nbChannels; ++channel) {
                nodes[param][channel] =
                    castNode<PxAnimValueProtocol<double> const>(valueNodes[param][channel]);
            }
        }
    }

    /// All values at `time` in the order of the indexes, with `validity` narrowed by each.
    Values read(PxTimeContext const& time, PxValidityInterval& validity) const
    {
        Values values;
        for (int param = 0; param < RemapColorNames::nbParams; ++param) {
            for (int channel = 0; channel < RemapColorNames::nbChannels; ++channel) {
                values[param][channel] = static_cast<float>(
                    RemapColorNodeUtils::readValue(nodes[param][channel], time, validity));
            }
        }
        return values;
    }

    /// Calls `function` with each handle, in the order of the indexes.
    template <typename Function>
    void forEach(Function const& function) const
    {
        for (auto const& param : nodes) {
            for (auto const& node : param) {
                function(node);
            }
        }
    }

private:
    PerParam<PxNodePtr<PxAnimValueProtocol<double> const>> nodes;
};
