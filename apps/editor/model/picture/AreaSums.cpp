#include "editor/model/picture/AreaSums.h"

#include "editor/model/document/UserThread.h"
#include "editor/model/picture/RegionSource.h"
#include "pluginAPI/PxRequestMgr.h"
#include "session/ToolKeys.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>

namespace {

constexpr int pixelsPerStrip = 1 << 16;

int countRows(GeRectangle<int> const& area)
{
    return std::clamp(pixelsPerStrip / area.getWidth(), 1, area.getHeight());
}

struct Cancelled {};

} // namespace

/// Ends before what it uses: who lets it go joins its thread.
class AreaSums::Run {
public:
    Run(HostNode& node, Job const& itsJob)
        : job(itsJob), source(job.picture, job.area, countRows(job.area)), picker(node, source)
    {
    }
    ~Run() { cancel(); }
    void cancel() { cancelled = true; }

    void begin(std::weak_ptr<void> const& self, std::function<void()> const& ended)
    {
        thread = std::jthread([this, self, ended] {
            PxWorkerScope const worker;
            try {
                sums = picker.pick(job.area, job.time, [this] {
                    if (cancelled) {
                        throw Cancelled();
                    }
                });
            } catch (...) { // the picture's render says why
            }
            callOnUserThread(self, ended);
        });
    }

    std::optional<AreaSummary> sums;

private:
    std::atomic<bool> cancelled = false;
    Job job;
    RegionSource source;
    AreaPicker picker;
    std::jthread thread; // the others outlive it
};

AreaSums::~AreaSums() = default;

void AreaSums::cancel()
{
    if (run) {
        run->cancel();
    }
}

void AreaSums::start(Job const& job, Ended const& ended)
{
    copy.take(job.states);
    copy.getNode().setValues({{ToolKeys::outputDepth, Animated<int>(ToolKeys::depth32)}});
    run = std::make_shared<Run>(copy.getNode(), job);
    run->begin(run, [this, ended] {
        std::shared_ptr<Run> const done = std::exchange(run, nullptr);
        ended(done->sums);
    });
}
