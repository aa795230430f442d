#pragma once

#include "editor/model/document/NodeCopy.h"
#include "editor/model/picture/HeldPicture.h"
#include "runtime/engine/AreaPicker.h"

#include <functional>
#include <memory>
#include <optional>

/// Sums areas of pictures up aside, before and after the tool, one at a time. User-interface
/// thread; destroying it ends what is on its way.
class AreaSums {
public:
    struct Job {
        std::shared_ptr<HeldPicture const> picture;
        GeRectangle<int> area; ///< within the data window
        NodeStates states;
        double time;
    };
    /// Gets the sums; nothing if they could not be worked out.
    using Ended = std::function<void(std::optional<AreaSummary> const&)>;

    explicit AreaSums(PiToolProtocol const& tool) : copy(tool) {}
    ~AreaSums();

    bool isBusy() const { return run != nullptr; }

    /// Not while it is busy.
    void start(Job const& job, Ended const& ended);
    /// What is on its way ends at once, without sums.
    void cancel();

private:
    class Run;

    NodeCopy copy;
    std::shared_ptr<Run> run;
};
