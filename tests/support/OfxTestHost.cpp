#include "support/OfxTestHost.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <mutex>
#include <stdexcept>

namespace {

namespace Prop = OfxText::Prop;

OfxTestHost* current = nullptr;
std::mutex valueMutex; // of parameters' values and messages

// Properties.

template <typename T>
OfxStatus put(OfxPropertySet* set, char const* name, int index, T value)
{
    if (set == nullptr) {
        return OfxStat::badHandle;
    }
    if (set->refused.contains(name)) {
        return OfxStat::value;
    }
    auto& values = set->values[name];
    if (index < 0 || static_cast<std::size_t>(index) > values.size()) {
        return OfxStat::badIndex; // no gaps
    }
    values.resize(std::max(values.size(), static_cast<std::size_t>(index) + 1));
    values[static_cast<std::size_t>(index)] = value;
    return OfxStat::ok;
}

template <typename T, typename Out>
OfxStatus get(OfxPropertySet* set, char const* name, int index, Out* out)
{
    if (set == nullptr) {
        return OfxStat::badHandle;
    }
    auto const found = set->values.find(name);
    if (found == set->values.end() || index < 0 ||
        static_cast<std::size_t>(index) >= found->second.size()) {
        return OfxStat::badIndex;
    }
    T* const value = std::get_if<T>(&found->second[static_cast<std::size_t>(index)]);
    if (value == nullptr) {
        return OfxStat::value;
    }
    if constexpr (std::is_same_v<T, std::string>) {
        *out = value->data();
    } else {
        *out = *value;
    }
    return OfxStat::ok;
}

OfxStatus putText(OfxPropertySet* set, char const* name, int index, char const* value)
{
    return put(set, name, index, std::string(value));
}

OfxStatus getDimension(OfxPropertySet* set, char const* name, int* count)
{
    auto const found = set->values.find(name);
    *count = found == set->values.end() ? 0 : static_cast<int>(found->second.size());
    return found == set->values.end() ? OfxStat::unsupported : OfxStat::ok;
}

/// What the plug-in should not need stays null: a call to it is a crash that a test sees.
OfxPropertySuite const propertySuite = {
    put<void*>, putText, put<double>, put<int>,         nullptr,     nullptr,
    nullptr,    nullptr, get<void*>,  get<std::string>, get<double>, get<int>,
    nullptr,    nullptr, nullptr,     nullptr,          nullptr,     getDimension};

// Parameters.

OfxStatus defineParam(OfxParamSet* set, char const* type, char const* name,
                      OfxPropertySet** properties)
{
    if (set->find(name) != nullptr) {
        return 6; // it exists
    }
    auto param = std::make_unique<OfxParam>();
    param->name = name;
    param->type = type;
    *properties = &param->properties;
    set->params.push_back(std::move(param));
    return OfxStat::ok;
}

OfxStatus getParam(OfxParamSet* set, char const* name, OfxParam** param, OfxPropertySet**)
{
    *param = set->find(name);
    return *param == nullptr ? OfxStat::unsupported : OfxStat::ok;
}

OfxStatus readValue(OfxParam* param, double const* time, va_list arguments)
{
    std::lock_guard const lock(valueMutex);
    OfxTestValue* value = &param->value;
    if (time != nullptr && !param->keys.empty()) {
        auto next = param->keys.upper_bound(*time);
        value = next == param->keys.begin() ? &next->second : &std::prev(next)->second;
    }
    if (auto* const integer = std::get_if<int>(value)) {
        *va_arg(arguments, int*) = *integer;
    } else if (auto* const number = std::get_if<double>(value)) {
        *va_arg(arguments, double*) = *number;
    } else if (auto* const text = std::get_if<std::string>(value)) {
        *va_arg(arguments, char**) = text->data();
    } else {
        return OfxStat::unsupported;
    }
    return OfxStat::ok;
}

OfxStatus writeValue(OfxParam* param, double const* time, va_list arguments)
{
    std::lock_guard const lock(valueMutex);
    OfxTestValue& value = time == nullptr ? param->value : param->keys[*time];
    if (std::holds_alternative<int>(param->value)) {
        value = va_arg(arguments, int);
    } else if (std::holds_alternative<double>(param->value)) {
        value = va_arg(arguments, double);
    } else {
        value = std::string(va_arg(arguments, char const*));
    }
    return OfxStat::ok;
}

OfxStatus getValue(OfxParam* param, ...)
{
    va_list arguments;
    va_start(arguments, param);
    OfxStatus const status = readValue(param, nullptr, arguments);
    va_end(arguments);
    return status;
}

OfxStatus getValueAtTime(OfxParam* param, double time, ...)
{
    va_list arguments;
    va_start(arguments, time);
    OfxStatus const status = readValue(param, &time, arguments);
    va_end(arguments);
    return status;
}

OfxStatus setValue(OfxParam* param, ...)
{
    va_list arguments;
    va_start(arguments, param);
    OfxStatus const status = writeValue(param, nullptr, arguments);
    va_end(arguments);
    return status;
}

OfxStatus setValueAtTime(OfxParam* param, double time, ...)
{
    va_list arguments;
    va_start(arguments, time);
    OfxStatus const status = writeValue(param, &time, arguments);
    va_end(arguments);
    return status;
}

OfxStatus getNumKeys(OfxParam* param, unsigned int* count)
{
    *count = static_cast<unsigned int>(param->keys.size());
    return OfxStat::ok;
}

OfxStatus beginEdit(OfxParamSet* set, char const* label)
{
    if (set->depth++ == 0) {
        set->edits.emplace_back(label);
    }
    return OfxStat::ok;
}

OfxStatus endEdit(OfxParamSet* set)
{
    --set->depth;
    return OfxStat::ok;
}

OfxParameterSuite const paramSuite = {defineParam,    getParam,  nullptr, nullptr,  getValue,
                                      getValueAtTime, nullptr,   nullptr, setValue, setValueAtTime,
                                      getNumKeys,     nullptr,   nullptr, nullptr,  nullptr,
                                      nullptr,        beginEdit, endEdit};

// Curves.

OfxStatus getCurveValue(OfxParam* param, int curve, double, double position, double* value)
{
    std::lock_guard const lock(valueMutex);
    *value = param->curve ? param->curve(curve, position) : position;
    return OfxStat::ok;
}

OfxStatus addPoint(OfxParam* param, int curve, double, double key, double value, bool)
{
    std::lock_guard const lock(valueMutex);
    param->points.resize(3);
    param->points[static_cast<std::size_t>(curve)][key] = value;
    return OfxStat::ok;
}

OfxStatus deletePoints(OfxParam* param, int curve)
{
    std::lock_guard const lock(valueMutex);
    param->points.resize(3);
    param->points[static_cast<std::size_t>(curve)].clear();
    param->curve = nullptr;
    return OfxStat::ok;
}

OfxParametricParameterSuite const curveSuite = {getCurveValue, nullptr, nullptr,     nullptr,
                                                addPoint,      nullptr, deletePoints};

// Effects and images.

OfxStatus getProperties(OfxImageEffect* effect, OfxPropertySet** properties)
{
    *properties = &effect->properties;
    return OfxStat::ok;
}

OfxStatus getParams(OfxImageEffect* effect, OfxParamSet** params)
{
    *params = &effect->params;
    return OfxStat::ok;
}

OfxStatus defineClip(OfxImageEffect* effect, char const* name, OfxPropertySet** properties)
{
    *properties = &effect->clip(name).properties;
    return OfxStat::ok;
}

OfxStatus getClip(OfxImageEffect* effect, char const* name, OfxImageClip** clip,
                  OfxPropertySet** properties)
{
    auto const found = effect->clips.find(name);
    if (found == effect->clips.end()) {
        return OfxStat::badHandle;
    }
    *clip = found->second.get();
    if (properties != nullptr) {
        *properties = &found->second->properties;
    }
    return OfxStat::ok;
}

OfxStatus getClipProperties(OfxImageClip* clip, OfxPropertySet** properties)
{
    *properties = &clip->properties;
    return OfxStat::ok;
}

OfxStatus getImage(OfxImageClip* clip, double, OfxRectD const*, OfxPropertySet** image)
{
    if (clip->image == nullptr) {
        *image = nullptr;
        return clip->statusWithoutImage;
    }
    ++current->nbLentImages;
    *image = &clip->image->properties;
    return OfxStat::ok;
}

OfxStatus releaseImage(OfxPropertySet*)
{
    --current->nbLentImages;
    return OfxStat::ok;
}

int isAborted(OfxImageEffect*)
{
    return current->wantsAbort() ? 1 : 0;
}

OfxImageEffectSuite const effectSuite = {
    getProperties, getParams, defineClip, getClip, getClipProperties, getImage, releaseImage,
    nullptr,       isAborted, nullptr,    nullptr, nullptr,           nullptr};

OfxStatus takeMessage(void*, char const*, char const*, char const* format, ...)
{
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    std::lock_guard const lock(valueMutex);
    current->messages.emplace_back(text);
    return OfxStat::ok;
}

OfxMessageSuite const messageSuite = {takeMessage, takeMessage, nullptr};
OfxMessageSuite const nullMessageSuite = {nullptr, nullptr, nullptr};

void const* fetchSuite(OfxPropertySet*, char const* name, int version)
{
    std::string const wanted = name;
    auto const& traits = current->traits;
    if (wanted == OfxText::Suite::message && traits.hasMessages && version <= 2) {
        return traits.hasNullMessages && version == 2 ? &nullMessageSuite : &messageSuite;
    }
    if (version != 1) {
        return nullptr;
    }
    if (wanted == OfxText::Suite::property) {
        return &propertySuite;
    }
    if (wanted == OfxText::Suite::imageEffect) {
        return &effectSuite;
    }
    if (wanted == OfxText::Suite::parameter) {
        return &paramSuite;
    }
    return wanted == OfxText::Suite::parametric && traits.hasCurves ? &curveSuite : nullptr;
}

constexpr std::size_t guardBytes = 256;
constexpr std::byte guardByte{0xa5};

} // namespace

std::vector<std::string> OfxPropertySet::getTexts(std::string const& name) const
{
    std::vector<std::string> texts;
    auto const found = values.find(name);
    for (std::size_t index = 0; found != values.end() && index < found->second.size(); ++index) {
        texts.push_back(get<std::string>(name, index));
    }
    return texts;
}

OfxParam* OfxParamSet::find(std::string const& name) const
{
    for (auto const& param : params) {
        if (param->name == name) {
            return param.get();
        }
    }
    return nullptr;
}

OfxImageClip& OfxImageEffect::clip(std::string const& name)
{
    auto& clip = clips[name];
    if (clip == nullptr) {
        clip = std::make_unique<OfxImageClip>();
        clip->name = name;
    }
    return *clip;
}

OfxTestImage::OfxTestImage(Layout const& imageLayout) : layout(imageLayout)
{
    auto const height = static_cast<std::size_t>(layout.bounds.y2 - layout.bounds.y1);
    auto const step = static_cast<std::ptrdiff_t>(getRowSize()) + layout.padding;
    rowBytes = layout.isTopDown ? -step : step;
    std::size_t const size = static_cast<std::size_t>(step) * height;
    memory.assign(size + 2 * guardBytes + 64, guardByte);
    std::size_t const off = reinterpret_cast<std::uintptr_t>(memory.data()) % 64;
    first = guardBytes + (64 - off) % 64 + static_cast<std::size_t>(layout.shift);
    if (layout.isTopDown) {
        first += static_cast<std::size_t>(step) * (height - 1);
    }
    put(&properties, Prop::imageData, 0, static_cast<void*>(memory.data() + first));
    put(&properties, Prop::imageRowBytes, 0, static_cast<int>(rowBytes));
    int index = 0;
    for (int const side :
         {layout.bounds.x1, layout.bounds.y1, layout.bounds.x2, layout.bounds.y2}) {
        put(&properties, Prop::imageBounds, index++, side);
    }
    put(&properties, Prop::pixelDepth, 0, layout.depth);
    put(&properties, Prop::components, 0, layout.components);
}

std::size_t OfxTestImage::getPixelBytes() const
{
    std::size_t const sample = layout.depth == OfxText::Depth::single ? 4
                               : layout.depth == OfxText::Depth::byte ? 1
                                                                      : 2;
    return sample * (layout.components == OfxText::Components::rgba  ? 4
                     : layout.components == OfxText::Components::rgb ? 3
                                                                     : 1);
}

std::size_t OfxTestImage::getRowSize() const
{
    return getPixelBytes() * static_cast<std::size_t>(layout.bounds.x2 - layout.bounds.x1);
}

std::byte* OfxTestImage::getPixel(int x, int y)
{
    return memory.data() + first + (y - layout.bounds.y1) * rowBytes +
           (x - layout.bounds.x1) * static_cast<std::ptrdiff_t>(getPixelBytes());
}

std::vector<std::byte> OfxTestImage::read()
{
    std::vector<std::byte> bytes;
    for (int y = layout.bounds.y1; y < layout.bounds.y2; ++y) {
        std::byte const* const row = getPixel(layout.bounds.x1, y);
        bytes.insert(bytes.end(), row, row + getRowSize());
    }
    return bytes;
}

void OfxTestImage::write(std::vector<std::byte> const& bytes)
{
    std::size_t from = 0;
    for (int y = layout.bounds.y1; y < layout.bounds.y2; ++y) {
        std::memcpy(getPixel(layout.bounds.x1, y), bytes.data() + from, getRowSize());
        from += getRowSize();
    }
}

bool OfxTestImage::hasCleanGuards() const
{
    std::vector<std::byte> rest = memory;
    OfxTestImage copy(*this);
    for (int y = layout.bounds.y1; y < layout.bounds.y2; ++y) {
        auto const row = copy.getPixel(layout.bounds.x1, y) - copy.memory.data();
        std::fill_n(rest.begin() + row, getRowSize(), guardByte);
    }
    return std::all_of(rest.begin(), rest.end(), [](std::byte byte) { return byte == guardByte; });
}

OfxTestHost::OfxTestHost(std::string const& library, Traits const& hostTraits)
    : traits(hostTraits), handle(dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL), &dlclose)
{
    if (handle == nullptr) {
        throw std::runtime_error(dlerror());
    }
    current = this;
    for (int place = 0; place < static_cast<int>(traits.depths.size()); ++place) {
        put(&hostProperties, Prop::supportedPixelDepths, place,
            traits.depths[static_cast<std::size_t>(place)]);
    }
    put(&hostProperties, Prop::multipleClipDepths, 0, traits.takesDepths ? 1 : 0);
    put(&hostProperties, Prop::hostAnimatesBooleans, 0, 1);
    host = {&hostProperties, &fetchSuite};
    auto const getPlugin =
        reinterpret_cast<OfxPlugin* (*)(int)>(dlsym(handle.get(), "OfxGetPlugin"));
    plugin = getPlugin(0);
    plugin->setHost(&host);
    if (call(OfxText::Action::load, nullptr) != OfxStat::ok ||
        call(OfxText::Action::describe, &descriptor) != OfxStat::ok) {
        throw std::runtime_error("the plug-in neither loads nor describes itself");
    }
}

OfxTestHost::~OfxTestHost()
{
    while (!instances.empty()) {
        destroyInstance(*instances.back());
    }
    call(OfxText::Action::unload, nullptr);
    current = nullptr;
}

OfxStatus OfxTestHost::call(char const* action, OfxImageEffect* effect, OfxPropertySet* in,
                            OfxPropertySet* out) const
{
    return plugin->mainEntry(action, effect, in, out);
}

OfxImageEffect& OfxTestHost::getContext(std::string const& context)
{
    auto& described = contexts[context];
    if (described == nullptr) {
        described = std::make_unique<OfxImageEffect>();
        OfxPropertySet in;
        put(&in, Prop::context, 0, context);
        if (call(OfxText::Action::describeInContext, described.get(), &in) != OfxStat::ok) {
            throw std::runtime_error("the plug-in does not describe " + context);
        }
    }
    return *described;
}

OfxImageEffect& OfxTestHost::createInstance(std::string const& context)
{
    OfxImageEffect const& from = getContext(context);
    instances.push_back(std::make_unique<OfxImageEffect>());
    OfxImageEffect& effect = *instances.back();
    for (auto const& [name, clip] : from.clips) {
        effect.clip(name).properties = clip->properties;
    }
    for (auto const& described : from.params.params) {
        auto param = std::make_unique<OfxParam>(*described);
        auto const& defaults = param->properties.values[Prop::defaultValue];
        param->value = defaults.empty() ? OfxTestValue(static_cast<void*>(nullptr)) : defaults[0];
        effect.params.params.push_back(std::move(param));
    }
    if (call(OfxText::Action::createInstance, &effect) != OfxStat::ok) {
        throw std::runtime_error("the plug-in makes no instance");
    }
    return effect;
}

void OfxTestHost::destroyInstance(OfxImageEffect& effect)
{
    call(OfxText::Action::destroyInstance, &effect);
    std::erase_if(instances, [&](auto const& candidate) { return candidate.get() == &effect; });
}

OfxStatus OfxTestHost::render(OfxImageEffect& effect, OfxRectI const& window, double time) const
{
    OfxPropertySet in;
    put(&in, Prop::time, 0, time);
    int index = 0;
    for (int const side : {window.x1, window.y1, window.x2, window.y2}) {
        put(&in, Prop::renderWindow, index++, side);
    }
    return call(OfxText::Action::render, &effect, &in);
}

void OfxTestHost::edit(OfxImageEffect& effect, std::string const& param, OfxTestValue const& value)
{
    {
        std::lock_guard const lock(valueMutex);
        effect.param(param).value = value;
    }
    notifyEdited(effect, param);
}

OfxStatus OfxTestHost::notifyEdited(OfxImageEffect& effect, std::string const& param, double time)
{
    OfxPropertySet in;
    put(&in, Prop::type, 0, std::string(OfxText::Type::parameter));
    put(&in, Prop::name, 0, param);
    put(&in, Prop::changeReason, 0, std::string(OfxText::Reason::userEdited));
    put(&in, Prop::time, 0, time);
    return call(OfxText::Action::instanceChanged, &effect, &in);
}
