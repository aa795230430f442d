#include "editor/model/picture/ViewRenderer.h"

#include "editor/model/document/UserThread.h"
#include "editor/model/picture/RegionSource.h"
#include "runtime/engine/RenderEngine.h"

#include <atomic>
#include <thread>
#include <utility>

/// One render on its way. It ends before what it uses: the renderer joins it.
class ViewRenderer::Pass {
public:
    Pass(ViewRenderer& renderer, ViewRequest const& request, bool isThoroughPass)
        : isThorough(isThoroughPass), image(request.region, request.reduction),
          region(renderer.picture, request.region, isThorough ? 1 : request.reduction,
                 isThorough ? request.reduction : 1),
          sink(image, request.transform,
               isThorough ? ViewSink::Strips::Whole : ViewSink::Strips::Reduced,
               region.getInfo().dataWindow.y0)
    {
    }

    /// `ended` is called on the user-interface thread, if the pass is not let go before.
    void begin(std::weak_ptr<void> const& self, ViewRenderer& renderer, double time)
    {
        RenderOptions options;
        options.time = time;
        options.threads = renderer.workers;
        options.cancelled = &cancelled;
        thread = std::jthread([this, self, &renderer, options, chain = renderer.chain.get(),
                               source = renderer.source.get()] {
            std::exception_ptr failure;
            try {
                renderImage(*chain, *source, region, sink, options);
            } catch (...) {
                failure = std::current_exception();
            }
            callOnUserThread(self, [&renderer, failure] { renderer.end(failure); });
        });
    }

    bool const isThorough;
    std::atomic<bool> cancelled = false;
    ViewImage image;

private:
    RegionSource region;
    ViewSink sink;
    std::jthread thread; // the others outlive it
};

ViewRenderer::ViewRenderer(PiToolProtocol const& tool, int nbWorkers,
                           Callbacks const& userCallbacks)
    : workers(nbWorkers), callbacks(userCallbacks), graph(makeShared<HostGraph>()),
      renderNode(graph->createNode(tool))
{
}

ViewRenderer::~ViewRenderer()
{
    if (pass) {
        pass->cancelled = true;
        pass.reset();
    }
}

void ViewRenderer::setPicture(std::shared_ptr<HeldPicture const> const& newPicture)
{
    waiting.reset();
    thorough.reset();
    if (pass) {
        pass->cancelled = true;
        pass.reset();
    }
    chain.reset();
    source.reset();
    picture = newPicture;
    if (picture != nullptr) {
        source = makeNode<SourceImageNode>(picture->info);
        chain = castNode<PxImageProtocol const>(
            renderNode->buildChain(PxNodePtr<PxImageProtocol const>(source)));
    }
}

void ViewRenderer::request(ViewRequest const& newRequest, HostNode const& node)
{
    if (picture == nullptr || newRequest.region.isEmpty()) {
        return;
    }
    NodeValues values;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        values.emplace(slot.name, *slot.value->getState());
    }
    waiting = Wish{newRequest, std::move(values)};
    thorough.reset();
    if (!pass) {
        startNext();
    } else if (pass->isThorough) {
        pass->cancelled = true;
    }
}

void ViewRenderer::startNext()
{
    if (waiting.has_value()) {
        Wish const wish = *std::exchange(waiting, {});
        bool const isReduced = wish.request.reduction > 1;
        if (isReduced) {
            thorough = wish;
        }
        start(wish, !isReduced);
    } else if (thorough.has_value()) {
        start(*std::exchange(thorough, {}), true);
    }
}

void ViewRenderer::start(Wish const& wish, bool isThorough)
{
    try {
        renderNode->setValues(wish.values);
        pass = std::make_shared<Pass>(*this, wish.request, isThorough);
        pass->begin(pass, *this, wish.request.time);
    } catch (...) {
        pass.reset();
        callbacks.failed(std::current_exception());
    }
}

void ViewRenderer::end(std::exception_ptr const& failure)
{
    std::shared_ptr<Pass> const ended = std::exchange(pass, nullptr);
    // Before it is told, so that the workers are not idle meanwhile.
    startNext();
    if (!failure) {
        callbacks.shown(ended->image, ended->isThorough);
    } else {
        try {
            std::rethrow_exception(failure);
        } catch (RenderCancelled const&) { // by something newer
        } catch (...) {
            callbacks.failed(failure);
        }
    }
}
