// One picture: read, process, write, all at once.

#include "runtime/engine/RenderEngine.h"

#include <algorithm>
#include <exception>

namespace {

/// Setting a chain up costs some tens of microseconds: what a few thousand pixels cost.
constexpr int wantedStripPixels = 1 << 18;
constexpr std::chrono::milliseconds longestWait{50};

} // namespace

int chooseStripRows(ImageSource const& source)
{
    GeRectangle<int> const& window = source.getInfo().dataWindow;
    int const rowsPerBlock = std::max(source.getRowsPerBlock(), 1);
    int const width = std::max(window.getWidth(), 1);
    int const wantedRows = std::max(wantedStripPixels / width, 1);
    return std::max((wantedRows + rowsPerBlock - 1) / rowsPerBlock, 1) * rowsPerBlock;
}

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
