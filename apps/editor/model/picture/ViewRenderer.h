#pragma once

#include "editor/model/document/NodeCopy.h"
#include "editor/model/picture/HeldPicture.h"
#include "editor/model/picture/ViewPass.h"
#include "editor/model/picture/WorkCrew.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// What is to be shown of a picture.
struct ViewRequest {
    PixelGrid grid{};
    ViewTransform transform{};
    double time = 0.0;
    bool needsResult = true;
    bool needsSource = false; ///< the picture without the tool, shown alike
    bool isQuick = false;     ///< nothing thorough is to come

    bool operator==(ViewRequest const&) const = default;
};

/// Renders what a view shows, aside, through a node of its own. Every image comes twice: quickly,
/// then from all pixels when nothing newer has been asked for in a moment. The newest request wins:
/// a quick image on its way is still shown, so that what is dragged is followed; a thorough one is
/// called off.
///
/// Made, used and destroyed on the user-interface thread, on which the callbacks come too.
class ViewRenderer {
public:
    enum Side { Result, Source };
    static constexpr std::size_t nbSides = 2;

    /// How near an image comes to what was asked for.
    enum class Stage {
        Overtaken, ///< it is of an older request
        Quick,
        Final, ///< of the newest request, from all pixels
    };

    struct Callbacks {
        std::function<void(Side, std::shared_ptr<ViewImage const> const&, Stage)> shown;
        std::function<void(std::exception_ptr const&)> failed;
        /// Everything that was asked for has been shown, or could not be.
        std::function<void()> settled;
    };

    ViewRenderer(PiToolProtocol const& tool, int nbWorkers, Callbacks const& userCallbacks);
    ~ViewRenderer();

    void setPicture(std::shared_ptr<HeldPicture const> const& newPicture);

    /// Shows the result with the values that `node` has now.
    void request(ViewRequest const& newRequest, HostNode const& node);

    bool isBusy() const { return crew.isBusy(); }

private:
    /// What one side still lacks for the newest request.
    struct Demand {
        std::uint64_t generation = 0; ///< counts what it is for
        bool isNeeded = false;
        bool lacksQuick = false;
        bool lacksThorough = false;
    };
    struct Running {
        Side side;
        bool isThorough;
        std::uint64_t generation;
        std::shared_ptr<ViewImage> image;
    };

    void renew(Side side);
    void startNext();
    void start(Side side, bool isThorough);
    void end(std::exception_ptr const& failure);
    void fail(std::exception_ptr const& failure);
    void settle();
    std::shared_ptr<ViewImage> takeImage(PixelGrid const& grid);

    Callbacks callbacks;
    NodeCopy copy;
    std::shared_ptr<HeldPicture const> picture;
    std::optional<NodeChain> chain;
    std::optional<NodeChain> valueChain;

    ViewRequest wish{};
    NodeStates states; ///< of the newest request
    std::array<Demand, nbSides> demands{};
    std::optional<Running> running;
    std::vector<std::shared_ptr<ViewImage>> images; ///< to be used again when nobody has them
    WorkCrew crew;                                  // ends before what its jobs use
};
