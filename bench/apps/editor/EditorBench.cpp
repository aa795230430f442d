// How the editor follows the hand, starts, and rests; offscreen, in the window as a person has it.
//
// editorBench [options of Google Benchmark]
// editorBench --child MICROSECONDS FILE: what a start is measured with.

#include "editor/model/picture/RegionSource.h"
#include "editor/view/window/EditorWindow.h"
#include "editor/view/window/Theme.h"
#include "media/ImageFiles.h"
#include "runtime/engine/RenderEngine.h"
#include "support/TestFolder.h"

#include <QApplication>
#include <QEventLoop>
#include <QMouseEvent>
#include <QTimer>
#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int viewWidth = 1920;
constexpr int viewHeight = 1080;
constexpr int pictureWidth = 3840;
constexpr int pictureHeight = 2160;
constexpr int nbWorkers = 2;
constexpr int nbMoves = 400;
constexpr int nbWarmUps = 20;
constexpr std::chrono::seconds idleTime{2};

double toMilliseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

double toSeconds(timeval const& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

double countProcessorSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return toSeconds(usage.ru_utime) + toSeconds(usage.ru_stime);
}

/// Of this program alone: what the system counts for a process begins with its parent's.
double findPeakMegabytes()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    double kilobytes = 0.0;
    while (status >> word && word != "VmHWM:") {
    }
    status >> kilobytes;
    return kilobytes / 1024.0;
}

/// Tells when the picture has been painted with an image of some stage.
class PaintWatch : public QObject {
public:
    PaintWatch(PicturePanel& panel, PictureWidget& picture)
    {
        connect(&panel, &PicturePanel::shown, this, [this](ViewRenderer::Stage stage) {
            hasQuick = hasQuick || stage != ViewRenderer::Stage::Overtaken;
            hasFinal = hasFinal || stage == ViewRenderer::Stage::Final;
        });
        picture.installEventFilter(this);
    }

    void reset() { hasQuick = hasFinal = isQuickPainted = isFinalPainted = false; }

    void waitForQuick() { wait(isQuickPainted); }
    void waitForFinal() { wait(isFinalPainted); }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) { // it is painted when this call of the loop returns
            isQuickPainted = hasQuick;
            isFinalPainted = hasFinal;
        }
        return false;
    }

private:
    static void wait(bool const& flag)
    {
        while (!flag) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    bool hasQuick = false;
    bool hasFinal = false;
    bool isQuickPainted = false;
    bool isFinalPainted = false;
};

/// The editor with a picture, EXR display and curves, as large as asked for.
class Scene {
public:
    explicit Scene(std::filesystem::path const& file)
        : watch(window.getPicturePanel(), window.getPicture())
    {
        Document& document = window.getDocument();
        document.setNumbers("", {"Mode"}, ControllerLink::ExrDisplay);
        CurvePoints curve = document.getCurve(0);
        for (std::size_t point = 3; point < 6; ++point) {
            curve[point].y += 0.1F;
        }
        document.setCurves("", {curve, curve, curve});
        window.getPicture().setFixedSize(viewWidth, viewHeight);
        window.openPicture(file);
        window.show();
        watch.waitForFinal();
    }

    /// Moves the middle key by the mouse, a pixel or so each time.
    void press() { sendMouse(QEvent::MouseButtonPress, place(0)); }
    void move(int step)
    {
        watch.reset();
        sendMouse(QEvent::MouseMove, place(step));
    }
    void release() { sendMouse(QEvent::MouseButtonRelease, place(0)); }

    EditorWindow window;
    PaintWatch watch;

private:
    QPointF place(int step)
    {
        CurveWidget& curves = window.getCurvePanel().getCurves();
        QPointF const key = curves.toWidget({0.5F, 0.6F});
        constexpr int reach = 20; // up and down again, another place each time
        return key + QPointF(0.0, std::abs(step % (2 * reach) - reach) - reach);
    }
    void sendMouse(QEvent::Type type, QPointF const& where)
    {
        CurveWidget& curves = window.getCurvePanel().getCurves();
        QMouseEvent event(type, where, curves.mapToGlobal(where), Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&curves, &event);
    }
};

double percentile(std::vector<double> times, double share)
{
    std::sort(times.begin(), times.end());
    auto const last = static_cast<double>(times.size() - 1);
    return times[static_cast<std::size_t>(std::ceil(share * last))];
}

/// From the mouse's move to the picture in the widget's buffer.
void follow(benchmark::State& state, std::string const& file)
{
    Scene scene(file);
    std::vector<double> times;
    for (auto _ : state) {
        scene.press();
        for (int step = 1; step <= nbWarmUps + nbMoves; ++step) {
            auto const begin = Clock::now();
            scene.move(step);
            scene.watch.waitForQuick();
            if (step > nbWarmUps) {
                times.push_back(toMilliseconds(Clock::now() - begin));
            }
        }
        scene.release();
    }
    state.counters["median_ms"] = percentile(times, 0.5);
    state.counters["most_ms"] = percentile(times, 0.99);
    state.counters["worst_ms"] = percentile(times, 1.0);
}

/// From the last move to all pixels of what is in view.
void rest(benchmark::State& state, std::string const& file)
{
    Scene scene(file);
    std::vector<double> times;
    int step = 0;
    for (auto _ : state) {
        scene.press();
        for (int pause = 0; pause < nbWarmUps; ++pause) {
            for (int move = 0; move < 4; ++move) {
                scene.move(++step);
                scene.watch.waitForQuick();
            }
            auto const begin = Clock::now();
            scene.move(++step);
            scene.watch.waitForFinal();
            times.push_back(toMilliseconds(Clock::now() - begin));
        }
        scene.release();
    }
    state.counters["median_ms"] = percentile(times, 0.5);
    state.counters["most_ms"] = percentile(times, 1.0);
}

class NoSink : public ImageSink {
public:
    void writeStrip(IxTile const& result, ImageStrip const&) override
    {
        benchmark::DoNotOptimize(result.isNull());
    }
    void finish() override {}
};

/// The same look over the whole frame, from memory, by the engine.
void renderWhole(benchmark::State& state, std::string const& file)
{
    Scene scene(file);
    auto const picture = openImage(file, {});
    auto const start = makeNode<SourceImageNode>(picture->getInfo());
    auto const chain = castNode<PxImageProtocol const>(
        scene.window.getDocument().getNode().buildChain(PxNodePtr<PxImageProtocol const>(start)));
    Plate plate(nbWorkers);
    plate.open(file);
    while (plate.getPicture() == nullptr) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    for (auto _ : state) {
        RegionSource source(plate.getPicture(), picture->getInfo().dataWindow, 16);
        NoSink sink;
        RenderOptions options;
        options.threads = nbWorkers;
        renderImage(*chain, *start, source, sink, options);
    }
}

struct Start {
    double window = 0.0;  ///< milliseconds to the first painting of the window
    double picture = 0.0; ///< to that of the picture
    double memory = 0.0;  ///< peak, megabytes, after some dragging
    double idle = 0.0;    ///< milliseconds of processor time while nothing happens
};

/// Within a process of its own; `begin` is when the parent started it.
int runChild(long begin, std::string const& file, int nbArguments, char** arguments)
{
    auto const sinceStart = [begin] {
        return toMilliseconds(Clock::now().time_since_epoch() - std::chrono::microseconds(begin));
    };
    QApplication application(nbArguments, arguments);
    QApplication::setCursorFlashTime(0);
    Theme::apply(application);
    Start start;
    EditorWindow window;
    window.openPicture(file);
    window.show();
    PaintWatch watch(window.getPicturePanel(), window.getPicture());
    QCoreApplication::processEvents();
    start.window = sinceStart();
    watch.waitForQuick();
    start.picture = sinceStart();
    watch.waitForFinal();
    for (int step = 1; step < nbWarmUps; ++step) {
        watch.reset();
        window.getDocument().setNumbers("", {"Linear.Gamma.Red"}, 1.0 + 0.01 * step);
        watch.waitForQuick();
    }
    watch.waitForFinal();
    double const before = countProcessorSeconds();
    QEventLoop pause;
    QTimer::singleShot(idleTime, &pause, &QEventLoop::quit);
    pause.exec();
    start.idle = (countProcessorSeconds() - before) * 1e3;
    start.memory = findPeakMegabytes();
    std::printf("%f %f %f %f\n", start.window, start.picture, start.memory, start.idle);
    return 0;
}

void startProgram(benchmark::State& state, std::string const& file)
{
    std::string const program = std::filesystem::read_symlink("/proc/self/exe");
    for (auto _ : state) {
        auto const now =
            std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch());
        std::string const command =
            "'" + program + "' --child " + std::to_string(now.count()) + " '" + file + "'";
        Start start;
        FILE* const answer = ::popen(command.c_str(), "r");
        bool const isGood =
            answer != nullptr && std::fscanf(answer, "%lf %lf %lf %lf", &start.window,
                                             &start.picture, &start.memory, &start.idle) == 4;
        if (answer == nullptr || ::pclose(answer) != 0 || !isGood) {
            state.SkipWithError("the editor did not start");
            return;
        }
        state.SetIterationTime(start.picture * 1e-3);
        state.counters["window_ms"] = start.window;
        state.counters["picture_ms"] = start.picture;
        state.counters["memory_mb"] = start.memory;
        state.counters["idle_ms"] = start.idle;
    }
}

} // namespace

int main(int nbArguments, char** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (nbArguments == 4 && std::string(arguments[1]) == "--child") {
        return runChild(std::stol(arguments[2]), arguments[3], nbArguments, arguments);
    }
    benchmark::Initialize(&nbArguments, arguments);
    if (benchmark::ReportUnrecognizedArguments(nbArguments, arguments)) {
        return 2;
    }
    TestFolder const folder;
    std::string const file = folder.path / "plate.exr";
    std::string const maker =
        std::filesystem::read_symlink("/proc/self/exe").replace_filename("exrFiles");
    std::string const command = "'" + maker + "' make '" + file + "' " +
                                std::to_string(pictureWidth) + " " + std::to_string(pictureHeight) +
                                " zip 0";
    if (std::system(command.c_str()) != 0) {
        return 1;
    }
    QApplication application(nbArguments, arguments);
    Theme::apply(application);
    auto const add = [&file](char const* name, auto* function) {
        return benchmark::RegisterBenchmark(
                   name, [function, file](auto& state) { function(state, file); })
            ->Unit(benchmark::kMillisecond);
    };
    add("editor/start", &startProgram)->UseManualTime()->Iterations(1)->Repetitions(7);
    add("editor/follow", &follow)->UseRealTime()->Iterations(1);
    add("editor/rest", &rest)->UseRealTime()->Iterations(1);
    add("editor/whole frame", &renderWhole)->UseRealTime();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
