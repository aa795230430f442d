#include "editor/model/render/RenderRun.h"

#include "session/Failures.h"
#include "session/ProjectFiles.h"
#include "shots/ShotPace.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

constexpr std::size_t mostMessages = 1000; // more tell nobody more

std::filesystem::path findCommandLine()
{
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path() / "remapcolor";
}

} // namespace

/// The document's values as a file for as long as that is needed.
class RenderRun::SavedLook {
public:
    explicit SavedLook(Document const& document)
    {
        std::error_code failure;
        std::string name =
            (std::filesystem::temp_directory_path(failure) / "remapcolor-XXXXXX").string();
        if (failure || ::mkdtemp(name.data()) == nullptr) {
            throw SurroundingsError("there is no folder for temporary files; TMPDIR names one");
        }
        folder = name;
        try {
            saveProject(getFile(), document.getNode());
            keepAge(document);
        } catch (...) {
            std::filesystem::remove_all(folder, failure);
            throw;
        }
    }
    ~SavedLook()
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    SavedLook(SavedLook const&) = delete;
    SavedLook& operator=(SavedLook const&) = delete;

    std::filesystem::path getFile() const { return folder / "look.json"; }

private:
    /// Pictures that were made of a project since it was saved need not be made again.
    void keepAge(Document const& document) const
    {
        std::error_code ignored;
        std::filesystem::path const& project = document.getProjectFile().getPath();
        if (!project.empty() && !document.isModified()) {
            auto const age = std::filesystem::last_write_time(project, ignored);
            if (!ignored) {
                std::filesystem::last_write_time(getFile(), age, ignored);
            }
        }
    }

    std::filesystem::path folder;
};

RenderRun::RenderRun() = default;
RenderRun::~RenderRun() = default;

void RenderRun::start(Document const& document, RenderWish const& wish)
{
    auto newLook = std::make_unique<SavedLook>(document);
    std::vector<std::string> words = makeRenderWords(wish, newLook->getFile());
    words.insert(words.begin(), findCommandLine().string());
    words.emplace_back("--progress=json");
    auto newProgram = std::make_unique<ChildProgram>(
        words, ChildProgram::Listener{[this](std::string const& line) { takeLine(line); },
                                      [this](int newStatus) { takeEnd(newStatus); }});
    program = std::move(newProgram);
    look = std::move(newLook);
    wasCancelled = false;
    status = 0;
    nbDone = nbFrames = 0;
    started = std::chrono::steady_clock::now();
    messages.clear();
    summary.reset();
    outcome.clear();
    handlers.call(*this);
}

void RenderRun::cancel()
{
    if (isRunning()) {
        wasCancelled = true;
        program->stop();
        handlers.call(*this);
    }
}

std::string RenderRun::describePace() const
{
    std::chrono::duration<double> const elapsed = std::chrono::steady_clock::now() - started;
    return formatPace(static_cast<double>(nbDone), nbFrames, elapsed.count());
}

void RenderRun::takeLine(std::string const& line)
{
    using Kind = ShotEvent::Kind;
    std::optional<ShotEvent> const event = parseJson(line);
    bool const isMessage = !event.has_value() || event->kind == Kind::Note ||
                           event->kind == Kind::Warning || event->kind == Kind::Error;
    bool const isOfCancel = wasCancelled && event.has_value() && !event->frame.has_value();
    if (isMessage && !isOfCancel && messages.size() < mostMessages) {
        messages.push_back(event.has_value() ? formatText(*event) : line);
    }
    if (event.has_value()) {
        if (event->kind == Kind::Start) {
            look.reset(); // it has been read
        }
        nbDone = std::max(nbDone, event->done);
        nbFrames = std::max(nbFrames, event->total);
        if (event->kind == Kind::End) {
            summary = event->summary;
        }
    }
    handlers.call(*this);
}

void RenderRun::takeEnd(int newStatus)
{
    program.reset();
    look.reset();
    status = newStatus;
    if (summary.has_value()) {
        outcome = formatSummary(*summary);
    } else if (wasCancelled) {
        outcome = "cancelled; nothing was written";
    } else if (!messages.empty()) {
        outcome = std::exchange(messages, {}).back();
    } else {
        outcome = "the command line ended with status " + std::to_string(status);
    }
    handlers.call(*this);
}
