#pragma once

#include "editor/model/picture/ViewTransform.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// A view of a display, and the look that is shown by it instead of its own; an empty one is none.
struct DisplayView {
    std::string display;
    std::string view;
    std::optional<std::string> look{};

    bool operator==(DisplayView const&) const = default;
};

/// What a configuration of OpenColorIO offers. Immutable; any thread.
class DisplayConfig {
public:
    struct Display {
        std::string name;
        std::vector<std::string> views;
    };

    virtual ~DisplayConfig() = default;

    /// The default ones first.
    virtual std::vector<Display> const& getDisplays() const = 0;
    virtual std::vector<std::string> const& getLooks() const = 0;

    /// For linear values of the scene. Throws DisplayError.
    virtual std::shared_ptr<DisplayProcessor const>
    makeProcessor(DisplayView const& view) const = 0;
};

/// A configuration cannot be used. The text is the reason alone.
class DisplayError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a configuration; the library that does so is loaded when it is first needed. Throws
/// DisplayError. Any thread, one at a time.
std::shared_ptr<DisplayConfig const> readDisplayConfig(std::string const& file);

/// The function that the module exports.
inline constexpr char const* displayConfigFunctionName = "remapReadDisplayConfig";
using DisplayConfigFunction = void (*)(std::string const& file,
                                       std::shared_ptr<DisplayConfig const>& config);
