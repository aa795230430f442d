// An instance's parameters: what they say, and what happens when a user edits them.

#include "Instance.h"

#include "CurveInput.h"
#include "HostAccess.h"
#include "base/HostException.h"

#include <algorithm>
#include <cmath>

namespace {

using Kind = ParamSpec::Kind;

/// Reads a value of the type T, which must be the parameter's own.
template <typename T>
std::optional<T> read(OfxParam* param, std::optional<OfxTime> time)
{
    OfxParameterSuite const& suite = *HostAccess::get().params;
    T value{};
    bool const isRead =
        param != nullptr && (time ? suite.paramGetValueAtTime(param, *time, &value)
                                  : suite.paramGetValue(param, &value)) == OfxStat::ok;
    return isRead ? std::optional(value) : std::nullopt;
}

/// One undo step of the host.
class EditBlock {
public:
    EditBlock(OfxParamSet* editedParams, char const* label) : params(editedParams)
    {
        HostAccess::get().params->paramEditBegin(params, label);
    }
    EditBlock(EditBlock const&) = delete;
    EditBlock& operator=(EditBlock const&) = delete;
    ~EditBlock() { HostAccess::get().params->paramEditEnd(params); }

private:
    OfxParamSet* params;
};

/// The clip of that name; null if the host has none.
OfxImageClip* findClip(OfxImageEffect* effect, char const* name)
{
    OfxImageClip* clip = nullptr;
    bool const isThere =
        HostAccess::get().effects->clipGetHandle(effect, name, &clip, nullptr) == OfxStat::ok;
    return isThere ? clip : nullptr;
}

ValueState makeState(ParamSpec const& spec, ParamHandle const& param, OfxTime time)
{
    if (spec.kind == Kind::Number) {
        double const number = param.getDouble(time).value_or(spec.defaultNumber);
        double const usable = std::isfinite(number) ? number : spec.defaultNumber;
        return Animated<double>(std::clamp(usable, spec.minimum, spec.maximum));
    }
    int const integer = param.getInt(time).value_or(static_cast<int>(spec.defaultNumber));
    if (spec.kind == Kind::Choice) {
        auto const nbOptions = static_cast<int>(spec.options.size());
        bool const isKnown = integer >= 0 && integer < nbOptions;
        return Animated<int>(isKnown ? integer : static_cast<int>(spec.defaultNumber));
    }
    return Animated<bool>(integer != 0);
}

} // namespace

std::optional<int> ParamHandle::getInt(std::optional<OfxTime> time) const
{
    return read<int>(param, time);
}

std::optional<double> ParamHandle::getDouble(std::optional<OfxTime> time) const
{
    return read<double>(param, time);
}

std::optional<std::string> ParamHandle::getText(std::optional<OfxTime> time) const
{
    std::optional<char*> const text = read<char*>(param, time);
    return text && *text != nullptr ? std::optional<std::string>(*text) : std::nullopt;
}

bool ParamHandle::setInt(int value) const
{
    return param != nullptr && HostAccess::get().params->paramSetValue(param, value) == OfxStat::ok;
}

bool ParamHandle::setDouble(double value, std::optional<OfxTime> time) const
{
    OfxParameterSuite const& suite = *HostAccess::get().params;
    return param != nullptr && (time ? suite.paramSetValueAtTime(param, *time, value)
                                     : suite.paramSetValue(param, value)) == OfxStat::ok;
}

bool ParamHandle::setText(std::string const& value) const
{
    return param != nullptr &&
           HostAccess::get().params->paramSetValue(param, value.c_str()) == OfxStat::ok;
}

bool ParamHandle::isAnimated() const
{
    unsigned int nbKeys = 0;
    return param != nullptr &&
           HostAccess::get().params->paramGetNumKeys(param, &nbKeys) == OfxStat::ok && nbKeys > 0;
}

Instance::Instance(OfxImageEffect* effectHandle, ParamTable const& paramTable)
    : effect(effectHandle), table(paramTable)
{
    HostAccess const& access = HostAccess::get();
    if (access.effects->getParamSet(effect, &paramSet) != OfxStat::ok) {
        paramSet = nullptr;
    }
    for (ParamSpec const& spec : table.getSpecs()) {
        OfxParam* param = nullptr;
        bool const isThere = paramSet != nullptr && spec.kind != Kind::Group &&
                             access.params->paramGetHandle(paramSet, spec.name.c_str(), &param,
                                                           nullptr) == OfxStat::ok;
        params.emplace_back(isThere ? param : nullptr);
    }
    params.emplace_back();
    source = findClip(effect, OfxText::Clip::source);
    output = findClip(effect, OfxText::Clip::output);
    mask = findClip(effect, OfxText::Clip::mask);
    if (source == nullptr || output == nullptr) {
        throw HostException("the host gives no source or no output clip");
    }
}

NodeValues Instance::readValues(OfxTime time) const
{
    NodeValues values =
        readCurves(table, getParam(HostAccess::get().curves ? ParamTable::curves : ""),
                   getParam(ParamTable::curveText).getText(time).value_or(""), time);
    for (std::size_t place = 0; place < table.getSpecs().size(); ++place) {
        ParamSpec const& spec = table.getSpecs()[place];
        bool const isTools = !spec.input.empty() && spec.kind != Kind::Link &&
                             spec.name != ParamTable::outputDepth && spec.name != ParamTable::mix;
        if (isTools) {
            values.emplace(spec.input, makeState(spec, params[place], time));
        }
    }
    return values;
}

double Instance::readMix(OfxTime time) const
{
    ParamSpec const& spec = table.getSpecs()[table.find(ParamTable::mix)];
    ValueState const state = makeState(spec, getParam(ParamTable::mix), time);
    return std::get<Animated<double>>(state).evaluate(time).getValue();
}

bool Instance::isUnpremultiplied(OfxTime time) const
{
    return getParam(ParamTable::unpremultiply).getInt(time).value_or(0) != 0;
}

std::optional<SampleDepth> Instance::readOutputDepth() const
{
    switch (getParam(ParamTable::outputDepth).getInt({}).value_or(-1)) {
    case 0: return SampleDepth::Byte;
    case 1: return SampleDepth::Half;
    case 2: return SampleDepth::Float;
    default: return std::nullopt;
    }
}

void Instance::paramEdited(std::string const& name, OfxTime time)
{
    if (name == ParamTable::resetCurves) {
        resetCurves();
    } else if (name == ParamTable::curves) {
        // From now on the visible curve counts.
        ParamHandle const& text = getParam(ParamTable::curveText);
        if (!text.getText({}).value_or("").empty()) {
            text.setText("");
        }
    } else if (name == ParamTable::curveText) {
        checkCurveText();
    } else if (table.find(name) < table.getSpecs().size()) {
        followLink(table.find(name), time);
    }
}

void Instance::tellOnce(std::string const& text)
{
    if (!hasTold.exchange(true)) {
        HostAccess::get().tell(effect, OfxText::Message::log, text);
    }
}

void Instance::followLink(std::size_t place, OfxTime time) const
{
    auto const linked = table.findLinked(place);
    ParamHandle const& edited = params[place];
    if (linked.channels.empty() || params[linked.link].getInt({}).value_or(0) == 0) {
        return;
    }
    std::optional<double> const value = edited.getDouble(time);
    if (!value) {
        return;
    }
    EditBlock const block(paramSet, "Linked Channels");
    for (std::size_t const other : linked.channels) {
        // What has the value already is left alone: no undo step that changes nothing.
        if (other != place && params[other].getDouble(time) != value) {
            params[other].setDouble(*value,
                                    edited.isAnimated() ? std::optional(time) : std::nullopt);
        }
    }
}

void Instance::resetCurves() const
{
    EditBlock const block(paramSet, "Reset Adjusted Curves");
    getParam(ParamTable::curveText).setText("");
    resetWidget(getParam(ParamTable::curves));
    touchCurves();
}

/// Some hosts do not render anew after a plug-in's change of control points: an ordinary parameter
/// changes with them.
void Instance::touchCurves() const
{
    constexpr int nbCounts = 1 << 20;
    ParamHandle const& edits = getParam(ParamTable::curveEdits);
    edits.setInt((edits.getInt({}).value_or(0) + 1) % nbCounts);
}

void Instance::checkCurveText() const
{
    try {
        checkCurves(table, getParam(ParamTable::curveText).getText({}).value_or(""));
    } catch (HostException const& error) {
        HostAccess::get().tell(effect, OfxText::Message::error,
                               std::string("Adjust Curve Text: ") + error.what());
    }
}
