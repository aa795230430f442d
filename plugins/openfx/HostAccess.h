#pragma once

#include "OfxAbi.h"

#include <optional>
#include <string>

/// What the host that loaded the bundle offers. Filled by `load` on the host's main thread, only
/// read afterwards.
struct HostAccess {
    OfxHost const* host = nullptr;
    OfxPropertySuite const* properties = nullptr;
    OfxImageEffectSuite const* effects = nullptr;
    OfxParameterSuite const* params = nullptr;
    // Not every host has these.
    OfxParametricParameterSuite const* curves = nullptr;
    OfxMessageSuite::Message message = nullptr;

    /// The process's only one.
    static HostAccess& get();

    /// Fetches the suites; false if one is missing without which there is no plug-in.
    bool load();

    /// Forgets the suites; the host itself stays.
    void unload();

    /// Tells the host's log or user, if the host takes messages. `effect` may be null.
    void tell(OfxImageEffect* effect, char const* messageType, std::string const& text) const;
};

/// The properties of one of the host's objects. A null set, a missing property and a wrong type are
/// no failure: setting answers false, getting gives nothing.
class Properties {
public:
    explicit Properties(OfxPropertySet* propertySet) : set(propertySet) {}

    bool put(char const* name, int value, int index = 0) const;
    bool put(char const* name, double value, int index = 0) const;
    bool put(char const* name, char const* value, int index = 0) const;
    bool put(char const* name, std::string const& value, int index = 0) const;
    bool put(char const* name, void* value) const;

    std::optional<int> getInt(char const* name, int index = 0) const;
    std::optional<double> getDouble(char const* name, int index = 0) const;
    std::optional<std::string> getString(char const* name, int index = 0) const;
    void* getPointer(char const* name) const;

    /// How many values the property has; 0 if it is missing.
    int getCount(char const* name) const;

    /// All of the four, or nothing.
    std::optional<OfxRectI> getRectangle(char const* name) const;

private:
    OfxPropertySet* set;
};

/// Properties of an effect (descriptor or instance) and of an instance's clip. None for null.
Properties propertiesOf(OfxImageEffect* effect);
Properties propertiesOf(OfxImageClip* clip);
