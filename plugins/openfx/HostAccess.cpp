// The host's suites and properties.

#include "HostAccess.h"

namespace {

template <typename Suite>
Suite const* fetch(OfxHost const& host, char const* name, int version = 1)
{
    return static_cast<Suite const*>(host.fetchSuite(host.host, name, version));
}

OfxPropertySuite const* suite()
{
    return HostAccess::get().properties;
}

} // namespace

HostAccess& HostAccess::get()
{
    static HostAccess access;
    return access;
}

bool HostAccess::load()
{
    if (host == nullptr || host->fetchSuite == nullptr) {
        return false;
    }
    namespace Suite = OfxText::Suite;
    properties = fetch<OfxPropertySuite>(*host, Suite::property);
    effects = fetch<OfxImageEffectSuite>(*host, Suite::imageEffect);
    params = fetch<OfxParameterSuite>(*host, Suite::parameter);
    curves = fetch<OfxParametricParameterSuite>(*host, Suite::parametric);
    // Version 2 begins as version 1 does, and more than that is not needed.
    message = nullptr;
    for (int const version : {2, 1}) {
        auto const* const messages = fetch<OfxMessageSuite>(*host, Suite::message, version);
        if (message == nullptr && messages != nullptr) {
            message = messages->message;
        }
    }
    return properties != nullptr && effects != nullptr && params != nullptr;
}

void HostAccess::unload()
{
    OfxHost const* const kept = host;
    *this = {};
    host = kept;
}

void HostAccess::tell(OfxImageEffect* effect, char const* messageType,
                      std::string const& text) const
{
    if (message != nullptr) {
        message(effect, messageType, "remapColor", "%s", text.c_str());
    }
}

bool Properties::put(char const* name, int value, int index) const
{
    return set != nullptr && suite()->propSetInt(set, name, index, value) == OfxStat::ok;
}

bool Properties::put(char const* name, double value, int index) const
{
    return set != nullptr && suite()->propSetDouble(set, name, index, value) == OfxStat::ok;
}

bool Properties::put(char const* name, char const* value, int index) const
{
    return set != nullptr && suite()->propSetString(set, name, index, value) == OfxStat::ok;
}

bool Properties::put(char const* name, std::string const& value, int index) const
{
    return put(name, value.c_str(), index);
}

bool Properties::put(char const* name, void* value) const
{
    return set != nullptr && suite()->propSetPointer(set, name, 0, value) == OfxStat::ok;
}

std::optional<int> Properties::getInt(char const* name, int index) const
{
    int value = 0;
    bool const isThere =
        set != nullptr && suite()->propGetInt(set, name, index, &value) == OfxStat::ok;
    return isThere ? std::optional(value) : std::nullopt;
}

std::optional<double> Properties::getDouble(char const* name, int index) const
{
    double value = 0.0;
    bool const isThere =
        set != nullptr && suite()->propGetDouble(set, name, index, &value) == OfxStat::ok;
    return isThere ? std::optional(value) : std::nullopt;
}

std::optional<std::string> Properties::getString(char const* name, int index) const
{
    char* value = nullptr;
    bool const isThere = set != nullptr &&
                         suite()->propGetString(set, name, index, &value) == OfxStat::ok &&
                         value != nullptr;
    return isThere ? std::optional<std::string>(value) : std::nullopt;
}

void* Properties::getPointer(char const* name) const
{
    void* value = nullptr;
    bool const isThere =
        set != nullptr && suite()->propGetPointer(set, name, 0, &value) == OfxStat::ok;
    return isThere ? value : nullptr;
}

int Properties::getCount(char const* name) const
{
    int count = 0;
    bool const isThere =
        set != nullptr && suite()->propGetDimension(set, name, &count) == OfxStat::ok;
    return isThere ? count : 0;
}

std::optional<OfxRectI> Properties::getRectangle(char const* name) const
{
    auto const x1 = getInt(name, 0);
    auto const y1 = getInt(name, 1);
    auto const x2 = getInt(name, 2);
    auto const y2 = getInt(name, 3);
    if (!x1 || !y1 || !x2 || !y2) {
        return std::nullopt;
    }
    return OfxRectI{*x1, *y1, *x2, *y2};
}

Properties propertiesOf(OfxImageEffect* effect)
{
    OfxPropertySet* set = nullptr;
    if (effect == nullptr ||
        HostAccess::get().effects->getPropertySet(effect, &set) != OfxStat::ok) {
        set = nullptr;
    }
    return Properties(set);
}

Properties propertiesOf(OfxImageClip* clip)
{
    OfxPropertySet* set = nullptr;
    if (clip == nullptr ||
        HostAccess::get().effects->clipGetPropertySet(clip, &set) != OfxStat::ok) {
        set = nullptr;
    }
    return Properties(set);
}
