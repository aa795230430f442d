#pragma once

#include "editor/model/picture/HeldPicture.h"
#include "editor/model/picture/ViewImage.h"
#include "pluginAPI/PxNodeHandles.h"
#include "runtime/engine/SourceImageNode.h"
#include "runtime/graph/HostGraph.h"

#include <functional>
#include <memory>
#include <optional>

/// What is to be shown of a picture.
struct ViewRequest {
    GeRectangle<int> region; ///< within the data window
    int reduction = 1;       ///< pixels of the picture to one that is shown, each way
    ViewTransform transform;
    double time = 0.0;
};

/// Renders what a view shows, aside, through a node of its own: that node takes the values over
/// between two renders, so that no picture is made with the values of two moments. A reduced view
/// comes twice: at once from every n-th pixel, then from all of them. The newest request wins: it
/// begins when the quick render on its way has ended, and ends a thorough one.
///
/// Made, used and destroyed on the user-interface thread, on which the callbacks come too.
class ViewRenderer {
public:
    struct Callbacks {
        std::function<void(ViewImage const&, bool isFinal)> shown;
        std::function<void(std::exception_ptr const&)> failed;
    };

    ViewRenderer(PiToolProtocol const& tool, int nbWorkers, Callbacks const& userCallbacks);
    ~ViewRenderer();

    void setPicture(std::shared_ptr<HeldPicture const> const& newPicture);

    /// Shows the result with the values that `node` has now.
    void request(ViewRequest const& newRequest, HostNode const& node);

    bool isBusy() const { return pass != nullptr; }

private:
    struct Wish {
        ViewRequest request;
        NodeValues values;
    };
    class Pass;

    void startNext();
    void start(Wish const& wish, bool isThorough);
    void end(std::exception_ptr const& failure);

    int workers;
    Callbacks callbacks;
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> renderNode;
    std::shared_ptr<HeldPicture const> picture;
    PxNodePtr<SourceImageNode> source;
    PxNodePtr<PxImageProtocol const> chain;
    std::optional<Wish> waiting;
    std::optional<Wish> thorough; ///< to be done when nothing newer comes
    std::shared_ptr<Pass> pass;   ///< on its way
};
