// The plug-in and its parameters as the host's panel shows them.

#include "Description.h"

#include "HostAccess.h"
#include "base/HostException.h"

#include <algorithm>
#include <limits>
#include <string>

namespace {

namespace Prop = OfxText::Prop;
using Kind = ParamSpec::Kind;

constexpr char const* description =
    "Remaps colour: levels and gamma (Linear) or the exposure, defog, knee and gamma of an EXR "
    "display (EXRDisplay), then a curve for each of red, green and blue. Alpha is never changed. "
    "The same pictures, to the bit, as the native tool and its command line give.";

void describeClip(OfxImageEffect* effect, char const* name, bool isMask)
{
    OfxPropertySet* set = nullptr;
    if (HostAccess::get().effects->clipDefine(effect, name, &set) != OfxStat::ok) {
        if (isMask) {
            return; // a tool without a mask is still a tool
        }
        throw HostException(std::string("the host defines no clip ") + name);
    }
    Properties const clip(set);
    int place = 0;
    if (!isMask) {
        clip.put(Prop::supportedComponents, OfxText::Components::rgba, place++);
        clip.put(Prop::supportedComponents, OfxText::Components::rgb, place++);
    }
    clip.put(Prop::supportedComponents, OfxText::Components::alpha, place);
    clip.put(Prop::clipOptional, isMask ? 1 : 0);
    clip.put(Prop::clipIsMask, isMask ? 1 : 0);
    clip.put(Prop::supportsTiles, 1);
    clip.put(Prop::temporalClipAccess, 0);
}

char const* findType(Kind kind)
{
    switch (kind) {
    case Kind::Group: return OfxText::Param::group;
    case Kind::Choice: return OfxText::Param::choice;
    case Kind::Number: return OfxText::Param::number;
    case Kind::Switch:
    case Kind::Link: return OfxText::Param::boolean;
    case Kind::Curves: return OfxText::Param::parametric;
    case Kind::CurveText: return OfxText::Param::string;
    case Kind::Counter: return OfxText::Param::integer;
    case Kind::Button: break;
    }
    return OfxText::Param::pushButton;
}

void describeNumber(Properties const& param, ParamSpec const& spec)
{
    constexpr double sliderSteps = 100.0;
    constexpr int digits = 4;
    param.put(Prop::doubleType, OfxText::Prop::doubleTypePlain);
    param.put(Prop::defaultValue, spec.defaultNumber);
    // The hard range first: it may set the other. Project files of hosts want finite numbers.
    constexpr double largest = std::numeric_limits<float>::max();
    param.put(Prop::minimum, std::max(spec.minimum, -largest));
    param.put(Prop::maximum, std::min(spec.maximum, largest));
    param.put(Prop::displayMinimum, spec.displayMinimum);
    param.put(Prop::displayMaximum, spec.displayMaximum);
    param.put(Prop::increment, (spec.displayMaximum - spec.displayMinimum) / sliderSteps);
    param.put(Prop::digits, digits);
    param.put(Prop::animates, 1);
}

void describeSwitch(Properties const& param, ParamSpec const& spec, bool canAnimate)
{
    param.put(Prop::defaultValue, static_cast<int>(spec.defaultNumber));
    param.put(Prop::animates, canAnimate ? 1 : 0);
}

void describeChoice(Properties const& param, ParamSpec const& spec)
{
    int place = 0;
    for (std::string const& option : spec.options) {
        param.put(Prop::choiceOption, option, place++);
    }
    param.put(Prop::defaultValue, static_cast<int>(spec.defaultNumber));
    param.put(Prop::animates, 0);
}

void describeCurves(Properties const& param)
{
    constexpr int nbCurves = 3;
    static constexpr char const* names[nbCurves] = {"Red", "Green", "Blue"};
    static constexpr double low = 0.2;
    param.put(Prop::parametricDimension, nbCurves);
    for (int curve = 0; curve < nbCurves; ++curve) {
        param.put(Prop::dimensionLabel, names[curve], curve);
        for (int component = 0; component < nbCurves; ++component) {
            param.put(Prop::parametricUiColour, component == curve ? 1.0 : low,
                      nbCurves * curve + component);
        }
    }
    param.put(Prop::parametricRange, 0.0, 0);
    param.put(Prop::parametricRange, 1.0, 1);
    param.put(Prop::animates, 0);
}

void describeText(Properties const& param, bool isHidden)
{
    param.put(Prop::stringMode, OfxText::Prop::stringIsMultiLine);
    param.put(Prop::defaultValue, "");
    param.put(Prop::animates, 0);
    param.put(Prop::secret, isHidden ? 1 : 0);
}

void describeValue(Properties const& param, ParamSpec const& spec)
{
    HostAccess const& access = HostAccess::get();
    switch (spec.kind) {
    case Kind::Group: param.put(Prop::groupOpen, 1); return;
    case Kind::Choice: return describeChoice(param, spec);
    case Kind::Number: return describeNumber(param, spec);
    case Kind::Switch: {
        Properties const host(access.host->host);
        bool const canAnimate = host.getInt(Prop::hostAnimatesBooleans).value_or(0) != 0;
        return describeSwitch(param, spec, canAnimate && !spec.input.empty());
    }
    case Kind::Link:
        describeSwitch(param, spec, false);
        param.put(Prop::evaluateOnChange, 0);
        return;
    case Kind::Curves: return describeCurves(param);
    case Kind::CurveText: return describeText(param, access.curves != nullptr);
    case Kind::Counter:
        param.put(Prop::defaultValue, 0);
        param.put(Prop::animates, 0);
        param.put(Prop::secret, 1);
        return;
    case Kind::Button: return;
    }
}

/// Whether this host gets the parameter: not curves where it knows none.
bool isOffered(ParamSpec const& spec)
{
    return spec.kind != Kind::Curves || HostAccess::get().curves != nullptr;
}

void describeParam(OfxParamSet* params, ParamSpec const& spec)
{
    OfxPropertySet* set = nullptr;
    if (HostAccess::get().params->paramDefine(params, findType(spec.kind), spec.name.c_str(),
                                              &set) != OfxStat::ok) {
        return; // its default counts then
    }
    Properties const param(set);
    param.put(Prop::label, spec.label);
    param.put(Prop::scriptName, spec.name);
    if (!spec.hint.empty()) {
        param.put(Prop::hint, spec.hint);
    }
    if (!spec.parent.empty()) {
        param.put(Prop::parent, spec.parent);
    }
    describeValue(param, spec);
}

/// A page with everything, for hosts that have pages.
void describePage(OfxParamSet* params, ParamTable const& table)
{
    Properties const host(HostAccess::get().host->host);
    OfxPropertySet* set = nullptr;
    if (host.getInt(Prop::hostMaxPages).value_or(0) == 0 ||
        HostAccess::get().params->paramDefine(params, OfxText::Param::page, "controls", &set) !=
            OfxStat::ok) {
        return;
    }
    Properties const page(set);
    page.put(Prop::label, "Controls");
    int place = 0;
    for (ParamSpec const& spec : table.getSpecs()) {
        if (spec.kind != Kind::Group && isOffered(spec)) {
            page.put(Prop::pageChild, spec.name, place++);
        }
    }
}

} // namespace

void describeEffect(OfxImageEffect* effect)
{
    Properties const plugin = propertiesOf(effect);
    plugin.put(Prop::label, "Remap Color"); // resets the other two
    plugin.put(Prop::shortLabel, "Remap Color");
    plugin.put(Prop::longLabel, "Remap Color");
    plugin.put(Prop::version, 1, 0);
    plugin.put(Prop::version, 0, 1);
    plugin.put(Prop::versionLabel, REMAPCOLOR_VERSION);
    plugin.put(Prop::pluginDescription, description);
    plugin.put(Prop::grouping, "Color");
    plugin.put(Prop::supportedContexts, OfxText::Context::filter, 0);
    plugin.put(Prop::supportedContexts, OfxText::Context::general, 1);
    plugin.put(Prop::supportedPixelDepths, OfxText::Depth::byte, 0);
    plugin.put(Prop::supportedPixelDepths, OfxText::Depth::word, 1);
    plugin.put(Prop::supportedPixelDepths, OfxText::Depth::half, 2);
    plugin.put(Prop::supportedPixelDepths, OfxText::Depth::single, 3);
    plugin.put(Prop::renderThreadSafety, OfxText::Prop::renderFullySafe);
    plugin.put(Prop::hostFrameThreading, 1);
    plugin.put(Prop::supportsTiles, 1);
    plugin.put(Prop::supportsMultiResolution, 1);
    plugin.put(Prop::temporalClipAccess, 0);
    plugin.put(Prop::multipleClipDepths, 1);
    plugin.put(Prop::multipleClipPars, 0);
    plugin.put(Prop::singleInstance, 0);
    plugin.put(Prop::fieldRenderTwice, 0);
    plugin.put(Prop::sequentialRender, 0);
    plugin.put(Prop::clipPreferencesSlaveParam, ParamTable::outputDepth);
    plugin.put(Prop::noSpatialAwareness, "true");
    plugin.put(Prop::cpuRender, "true");
    plugin.put(Prop::openGlRender, "false");
}

void describeInContext(OfxImageEffect* effect, std::string const& context, ParamTable const& table)
{
    describeClip(effect, OfxText::Clip::source, false);
    if (context == OfxText::Context::general) {
        describeClip(effect, OfxText::Clip::mask, true);
    }
    describeClip(effect, OfxText::Clip::output, false);

    OfxParamSet* params = nullptr;
    if (HostAccess::get().effects->getParamSet(effect, &params) != OfxStat::ok) {
        throw HostException("the host has no parameters for the plug-in");
    }
    for (ParamSpec const& spec : table.getSpecs()) {
        if (isOffered(spec)) {
            describeParam(params, spec);
        }
    }
    describePage(params, table);
}
