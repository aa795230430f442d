#include "editor/model/document/Recovery.h"

#include "editor/model/document/UserThread.h"
#include "files/FileError.h"
#include "files/PrintableText.h"
#include "runtime/project/Project.h"

#include <algorithm>
#include <array>
#include <exception>
#include <nlohmann/json.hpp>
#include <random>
#include <utility>

namespace {

using Json = nlohmann::ordered_json;

constexpr char const* format = "remap-color-recovery";
constexpr int version = 1;
constexpr std::string_view ending = ".json";

/// Names of files are bytes; JSON is text.
std::string escape(std::filesystem::path const& path)
{
    std::string text;
    for (char const letter : path.string()) {
        auto const byte = static_cast<unsigned char>(letter);
        bool const isPlain = byte > ' ' && byte < 0x7f && letter != '%';
        constexpr char const* digits = "0123456789abcdef";
        text += isPlain ? std::string(1, letter)
                        : std::string{'%', digits[byte / 16], digits[byte % 16]};
    }
    return text;
}

std::filesystem::path unescape(std::string const& text)
{
    std::string bytes;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] == '%') {
            bytes += static_cast<char>(std::stoi(text.substr(place + 1, 2), nullptr, 16));
            place += 2;
        } else {
            bytes += text[place];
        }
    }
    return bytes;
}

std::string writeWork(UnsavedWork const& work)
{
    Json const saved = {{"format", format},
                        {"version", version},
                        {"time", work.time},
                        {"file", escape(work.file)},
                        {"picture", escape(work.picture)},
                        {"project", work.project},
                        {"known", work.knownText}};
    return saved.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<UnsavedWork> readWork(std::filesystem::path const& place)
{
    try {
        Json const saved = Json::parse(loadTextFile(place));
        if (saved.at("format") != format || saved.at("version") != version) {
            return std::nullopt;
        }
        return UnsavedWork{saved.at("project"), unescape(saved.at("file")), saved.at("known"),
                           unescape(saved.at("picture")), saved.at("time")};
    } catch (std::exception const&) {
        return std::nullopt;
    }
}

std::string makeName()
{
    std::random_device device;
    std::string name;
    while (name.size() < 16) {
        name += "0123456789abcdef"[device() % 16];
    }
    return name + std::string(ending);
}

std::filesystem::path lockOf(std::filesystem::path place)
{
    return place.replace_extension(".lock");
}

void removeFile(std::filesystem::path const& file)
{
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
}

} // namespace

Recovery::Recovery(std::filesystem::path itsFolder, std::function<void(std::string const&)> failed)
    : folder(std::move(itsFolder)), place(folder / makeName()), tellFailure(std::move(failed)),
      thread([this] { run(); })
{
}

Recovery::~Recovery()
{
    {
        std::lock_guard const guard(mutex);
        isEnding = true;
    }
    changed.notify_one();
    thread.join();
}

void Recovery::keep(UnsavedWork work)
{
    {
        std::lock_guard const guard(mutex);
        wanted = std::move(work);
        isWanted = true;
    }
    changed.notify_one();
}

void Recovery::drop()
{
    {
        std::lock_guard const guard(mutex);
        wanted.reset();
        isWanted = true;
    }
    changed.notify_one();
}

void Recovery::remove(LeftWork left)
{
    {
        std::lock_guard const guard(mutex);
        removed.push_back(std::move(left));
    }
    changed.notify_one();
}

void Recovery::run()
{
    std::unique_lock guard(mutex);
    for (;;) {
        changed.wait(guard, [this] { return isEnding || isWanted || !removed.empty(); });
        if (!isWanted && removed.empty()) {
            return; // the end, and everything is done
        }
        bool const hasWork = std::exchange(isWanted, false);
        std::optional<UnsavedWork> const work = wanted;
        std::vector<LeftWork> left = std::exchange(removed, {});
        guard.unlock();
        if (hasWork && work.has_value()) {
            write(*work);
        } else if (hasWork) {
            removeFile(place);
            lock.release();
        }
        // What was restored is kept in our own file first.
        for (LeftWork const& one : left) {
            if (!hasFailed) {
                removeFile(one.place);
            }
        }
        left.clear();
        guard.lock();
    }
}

void Recovery::write(UnsavedWork const& work)
{
    try {
        if (folder.empty()) {
            throw FileError(FileError::Fault::Surroundings, "there is no home folder (HOME)");
        }
        std::error_code failure;
        std::filesystem::create_directories(folder, failure);
        if (failure) {
            throw FileError(FileError::Fault::Surroundings,
                            "the folder " + quoteFile(folder) +
                                " cannot be made: " + describeSystemError(failure.value()));
        }
        if (!lock.isHeld()) {
            lock = LockFile(lockOf(place), describeThisProcess());
        }
        saveTextFile(place, writeWork(work));
        report({});
    } catch (std::exception const& error) {
        report(error.what());
    }
}

void Recovery::report(std::string const& failure)
{
    bool const isNew = failure.empty() ? hasFailed : !hasFailed;
    hasFailed = !failure.empty();
    if (isNew) {
        callOnUserThread(alive, [this, failure] { tellFailure(failure); });
    }
}

std::vector<LeftWork> Recovery::claim() const
{
    std::vector<LeftWork> left;
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        std::filesystem::path const& file = entry->path();
        std::error_code none;
        if (file.extension() == ".lock" &&
            !std::filesystem::exists(std::filesystem::path(file).replace_extension(ending), none)) {
            LockFile const forgotten(file, {}); // goes, unless somebody holds it
        }
        if (file.extension() != ending || file == place ||
            file.filename().string().front() == '.') {
            continue;
        }
        LockFile held(lockOf(file), describeThisProcess());
        if (held.isHeld()) {
            left.push_back({file, std::move(held), readWork(file)});
        }
    }
    auto const timeOf = [](LeftWork const& one) {
        return one.work.has_value() ? one.work->time : std::string();
    };
    std::sort(left.begin(), left.end(), [&](LeftWork const& one, LeftWork const& other) {
        return timeOf(one) > timeOf(other);
    });
    return left;
}
