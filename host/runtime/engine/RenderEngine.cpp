// One picture: read, process, write, all at once.

#include "runtime/engine/RenderEngine.h"

#include <algorithm>
#include <exception>

namespace {

constexpr std::chrono::milliseconds longestWait{50};

} // namespace

void renderImage(PxImageProtocol const& chain, SourceImageNode& sourceNode, ImageSource& source,
                 ImageSink& sink, RenderOptions const& options)
{
    RenderPool pool({.threads = options.threads, .cancelled = options.cancelled});
    RenderPool::Ticket const ticket =
        pool.add({chain, sourceNode, source, sink, options.mask, options.time});
    auto const showProgress = [&options](double share) {
        if (options.progress) {
            options.progress(share);
        }
    };
    for (;;) {
        auto const ended = pool.waitForEnd(longestWait);
        if (!ended.has_value()) {
            showProgress(pool.getShare(ticket));
        } else if (ended->failure) {
            std::rethrow_exception(ended->failure);
        } else {
            break;
        }
    }
    showProgress(1.0);
}
