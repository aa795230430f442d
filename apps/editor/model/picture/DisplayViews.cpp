#include "editor/model/picture/DisplayViews.h"

#include "session/Failures.h"

#include <chrono>
#include <utility>

namespace {

class WholeJob : public WorkCrew::Job {
public:
    explicit WholeJob(std::function<void()> itsWork) : work(std::move(itsWork)) {}

    int begin() override
    {
        work();
        return 0;
    }
    void doPart(int) override {}

private:
    std::function<void()> work;
};

/// As a sentence that names the file.
std::exception_ptr tellOfFile(std::exception_ptr const& failure, std::string const& file)
{
    try {
        std::rethrow_exception(failure);
    } catch (DisplayError const& error) {
        return std::make_exception_ptr(
            UsageError(file + " (named by OCIO) cannot be used: " + error.what()));
    } catch (...) {
        return failure;
    }
}

} // namespace

DisplayViews::DisplayViews(std::string const& configFile, Callbacks const& userCallbacks)
    : file(configFile), callbacks(userCallbacks)
{
}

void DisplayViews::read()
{
    if (config == nullptr && (!crew.has_value() || !crew->isBusy())) {
        start([path = file](Gain& gain) { gain.config = readDisplayConfig(path); });
    }
}

void DisplayViews::choose(std::optional<DisplayView> const& view)
{
    wanted = view;
    working.reset();
    startNext();
}

void DisplayViews::startNext()
{
    if (config != nullptr && wanted.has_value() && !crew->isBusy()) {
        working = std::exchange(wanted, {});
        start([from = config, view = *working](Gain& gain) {
            gain.processor = from->makeProcessor(view);
        });
    }
}

void DisplayViews::start(std::function<void(Gain&)> const& work)
{
    if (!crew.has_value()) {
        crew.emplace(1);
    }
    auto const gain = std::make_shared<Gain>();
    crew->start(std::make_unique<WholeJob>([work, gain] { work(*gain); }),
                std::chrono::milliseconds(0),
                [this, gain](std::exception_ptr const& failure) { end(*gain, failure); });
}

void DisplayViews::end(Gain const& gain, std::exception_ptr const& failure)
{
    bool const isWanted = gain.config != nullptr || config == nullptr || working.has_value();
    working.reset();
    if (failure && isWanted) {
        callbacks.failed(tellOfFile(failure, file));
    } else if (gain.config != nullptr) {
        config = gain.config;
        callbacks.read();
    } else if (isWanted) {
        callbacks.made(gain.processor);
    }
    startNext();
}
