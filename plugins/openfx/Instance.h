#pragma once

#include "Frame.h"
#include "OfxAbi.h"
#include "ParamTable.h"
#include "runtime/graph/HostNode.h"

#include <array>
#include <atomic>
#include <optional>
#include <string>
#include <vector>

/// A host's parameter by number, text or curve. A parameter that the host did not define, and one
/// that it fails to read, has no value. Each function passes the one type that its parameter takes.
class ParamHandle {
public:
    explicit ParamHandle(OfxParam* handle = nullptr) : param(handle) {}
    OfxParam* get() const { return param; }

    // Without a time: the current value, for main-thread actions.
    std::optional<int> getInt(std::optional<OfxTime> time) const;
    std::optional<double> getDouble(std::optional<OfxTime> time) const;
    std::optional<std::string> getText(std::optional<OfxTime> time) const;

    // In instanceChanged only. With a time, a key there.
    bool setInt(int value) const;
    bool setDouble(double value, std::optional<OfxTime> time) const;
    bool setText(std::string const& value) const;

    bool isAnimated() const;

private:
    OfxParam* param;
};

/// One node of the plug-in in a host's project. Handles are taken once; what is read afterwards is
/// the host's, which lets several threads read at once.
class Instance {
public:
    /// The table lives longer. Throws HostException where the host lacks the source or the output.
    Instance(OfxImageEffect* effectHandle, ParamTable const& paramTable);

    OfxImageEffect* getEffect() const { return effect; }
    OfxImageClip* getSource() const { return source; }
    OfxImageClip* getOutput() const { return output; }
    OfxImageClip* getMask() const { return mask; } ///< null where the context has none

    /// The tool's values at a time, but for "Output Depth", which the images decide. Throws
    /// ValueError for curves that cannot be read.
    NodeValues readValues(OfxTime time) const;

    double readMix(OfxTime time) const;
    bool isUnpremultiplied(OfxTime time) const;

    /// The depth that the user chose; nothing for that of the input.
    std::optional<SampleDepth> readOutputDepth() const;

    /// The user changed the parameter of that name.
    void paramEdited(std::string const& name, OfxTime time);

    /// Says something to the host's log, the first time only.
    void tellOnce(std::string const& text);

private:
    ParamHandle const& getParam(char const* name) const { return params[table.find(name)]; }
    void followLink(std::size_t place, OfxTime time) const;
    void resetCurves() const;
    void touchCurves() const;
    void checkCurveText() const;

    OfxImageEffect* effect;
    ParamTable const& table;
    OfxParamSet* paramSet = nullptr;
    std::vector<ParamHandle> params; ///< in the order of the table, and an empty one
    OfxImageClip* source = nullptr;
    OfxImageClip* output = nullptr;
    OfxImageClip* mask = nullptr;
    std::atomic<bool> hasTold = false;
};
