#include "editor/model/picture/ViewRenderer.h"

#include "runtime/engine/RenderPool.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

/// As long as a hand needs at most for the next move: until then a thorough image would only be in
/// the way of the next quick one.
constexpr std::chrono::milliseconds restingTime{30};

/// Both sides on the screen, one on its way.
constexpr std::size_t mostImages = 4;

} // namespace

ViewRenderer::ViewRenderer(PiToolProtocol const& tool, int nbWorkers,
                           Callbacks const& userCallbacks)
    : callbacks(userCallbacks), copy(tool), crew(nbWorkers)
{
}

ViewRenderer::~ViewRenderer()
{
    crew.drop();
}

void ViewRenderer::setPicture(std::shared_ptr<HeldPicture const> const& newPicture)
{
    crew.drop();
    running.reset();
    demands = {};
    wish = {};
    chain.reset();
    valueChain.reset();
    picture = newPicture;
    if (picture != nullptr) {
        chain.emplace(copy.getNode(), picture->info);
        valueChain.emplace(copy.getNode(), ValueTables::describeValues(picture->info));
    }
}

void ViewRenderer::request(ViewRequest const& newRequest, HostNode const& node)
{
    NodeStates const newStates(node);
    bool const isSameView = newRequest.grid == wish.grid && newRequest.transform == wish.transform;
    bool const isSameLook = newRequest.time == wish.time && newStates == states;
    wish = newRequest;
    states = newStates;
    if (!isSameView) {
        renew(Source);
    }
    if (!isSameView || !isSameLook) {
        renew(Result);
    }
    bool const isVisible = picture != nullptr && !wish.grid.isEmpty();
    demands[Result].isNeeded = isVisible && wish.needsResult;
    demands[Source].isNeeded = isVisible && wish.needsSource;
    if (!running.has_value()) {
        startNext();
        settle();
    } else if (running->isThorough) {
        bool const isOld = running->generation != demands[running->side].generation;
        bool const isInTheWay = std::any_of(demands.begin(), demands.end(), [](Demand const& side) {
            return side.isNeeded && side.lacksQuick;
        });
        if (isOld || isInTheWay) {
            crew.cancel();
        }
    }
}

void ViewRenderer::renew(Side side)
{
    Demand& demand = demands[side];
    ++demand.generation;
    demand.lacksQuick = true;
    demand.lacksThorough = true;
}

/// Quick images first, the result's before the source's.
void ViewRenderer::startNext()
{
    for (bool const isThorough : {false, true}) {
        for (Side const side : {Result, Source}) {
            Demand const& demand = demands[side];
            bool const isLacking =
                isThorough ? demand.lacksThorough && !wish.isQuick : demand.lacksQuick;
            if (demand.isNeeded && isLacking) {
                start(side, isThorough);
                return;
            }
        }
    }
}

void ViewRenderer::start(Side side, bool isThorough)
{
    try {
        copy.take(states);
        ViewTask const task{.picture = picture,
                            .chain = side == Result ? &*chain : nullptr,
                            .valueChain = side == Result ? &*valueChain : nullptr,
                            .time = wish.time,
                            .transform = wish.transform,
                            .image = takeImage(wish.grid)};
        task.image->time = wish.time;
        running = Running{side, isThorough, demands[side].generation, task.image};
        crew.start(isThorough ? makeThoroughPass(task) : makeQuickPass(task),
                   isThorough ? restingTime : std::chrono::milliseconds(0),
                   [this](std::exception_ptr const& failure) { end(failure); });
    } catch (...) {
        running.reset();
        fail(std::current_exception());
    }
}

void ViewRenderer::end(std::exception_ptr const& failure)
{
    Running const ended = *std::exchange(running, {});
    Demand& demand = demands[ended.side];
    bool const isNewest = ended.generation == demand.generation;
    if (failure) {
        try {
            std::rethrow_exception(failure);
        } catch (RenderCancelled const&) { // by something newer
        } catch (...) {
            fail(failure);
        }
        startNext();
    } else {
        if (isNewest) {
            (ended.isThorough ? demand.lacksThorough : demand.lacksQuick) = false;
        }
        // Before it is told, so that the workers are not idle meanwhile.
        startNext();
        Stage const newest = ended.isThorough ? Stage::Final : Stage::Quick;
        callbacks.shown(ended.side, ended.image, isNewest ? newest : Stage::Overtaken);
    }
    settle();
}

/// What cannot be rendered is not tried again until something changes.
void ViewRenderer::fail(std::exception_ptr const& failure)
{
    for (Demand& demand : demands) {
        demand.lacksQuick = false;
        demand.lacksThorough = false;
    }
    callbacks.failed(failure);
}

void ViewRenderer::settle()
{
    if (!running.has_value()) {
        callbacks.settled();
    }
}

std::shared_ptr<ViewImage> ViewRenderer::takeImage(PixelGrid const& grid)
{
    auto const isFree = [](std::shared_ptr<ViewImage> const& image) {
        return image.use_count() == 1;
    };
    auto const found = std::find_if(images.begin(), images.end(), isFree);
    if (found != images.end()) {
        (*found)->setGrid(grid);
        return *found;
    }
    if (images.size() >= mostImages) {
        images.erase(images.begin());
    }
    return images.emplace_back(std::make_shared<ViewImage>(grid));
}
