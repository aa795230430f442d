#pragma once

#include "editor/model/picture/DisplayConfig.h"
#include "editor/model/picture/WorkCrew.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

/// Reads a configuration and works views out aside; the newest wish counts. Made, used and
/// destroyed on the user-interface thread, on which the callbacks come too.
class DisplayViews {
public:
    struct Callbacks {
        std::function<void()> read; ///< there is a configuration
        std::function<void(std::shared_ptr<DisplayProcessor const> const&)> made;
        /// Gets a UsageError: neither, or the view that was asked for cannot be had.
        std::function<void(std::exception_ptr const&)> failed;
    };

    DisplayViews(std::string const& configFile, Callbacks const& userCallbacks);

    std::string const& getFile() const { return file; }

    /// Null until it has been read.
    DisplayConfig const* getConfig() const { return config.get(); }

    /// Reads the configuration unless that has been done.
    void read();

    /// Only with a configuration. Nothing, or what is on its way, takes a choice back.
    void choose(std::optional<DisplayView> const& view);

private:
    /// What a job has got.
    struct Gain {
        std::shared_ptr<DisplayConfig const> config;
        std::shared_ptr<DisplayProcessor const> processor;
    };

    void start(std::function<void(Gain&)> const& work);
    void startNext();
    void end(Gain const& gain, std::exception_ptr const& failure);

    std::string file;
    Callbacks callbacks;
    std::shared_ptr<DisplayConfig const> config;
    std::optional<DisplayView> wanted;  ///< not on its way yet
    std::optional<DisplayView> working; ///< on its way, and still wanted
    std::optional<WorkCrew> crew;
};
