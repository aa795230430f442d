#pragma once

#include "editor/model/document/LockFile.h"

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// Work that is not saved, as it is set aside.
struct UnsavedWork {
    std::string project;           ///< as text
    std::filesystem::path file;    ///< that it belongs to; empty for none yet
    std::string knownText;         ///< of that file
    std::filesystem::path picture; ///< that was worked on
    std::string time;              ///< of the last change kept, as people read it

    bool operator==(UnsavedWork const&) const = default;
};

/// What a program that did not end in order has left. Nobody else is offered it meanwhile.
struct LeftWork {
    std::filesystem::path place;
    LockFile lock;
    std::optional<UnsavedWork> work; ///< empty for a damaged file
};

/// Keeps unsaved work in a folder of the user's, where the next start finds it if this program does
/// not end in order. Each program has a file of its own there, which it writes aside and holds;
/// nothing runs between two calls. User-interface thread.
class Recovery {
public:
    /// `failed` is told on the user-interface thread why work cannot be set aside: once, until it
    /// can be again.
    Recovery(std::filesystem::path itsFolder, std::function<void(std::string const&)> failed);

    /// Writes what was asked for. What is kept stays.
    ~Recovery();
    Recovery(Recovery const&) = delete;
    Recovery& operator=(Recovery const&) = delete;

    /// Returns at once.
    void keep(UnsavedWork work);

    /// Nothing is unsaved any more. Returns at once.
    void drop();

    /// Takes what ended programs have left, newest first.
    std::vector<LeftWork> claim() const;

    /// Removes what was left, once what is to be kept is.
    void remove(LeftWork left);

private:
    void run();
    void write(UnsavedWork const& work);
    void report(std::string const& failure);

    std::filesystem::path const folder;
    std::filesystem::path const place; ///< of our own file
    std::function<void(std::string const&)> tellFailure;
    std::shared_ptr<void> alive = std::make_shared<int>(0);

    std::mutex mutex;
    std::condition_variable changed;
    bool isEnding = false;             // locked by mutex
    bool isWanted = false;             // locked by mutex; something waits to be done
    std::optional<UnsavedWork> wanted; // locked by mutex; empty: nothing is to be kept
    std::vector<LeftWork> removed;     // locked by mutex

    LockFile lock;          // of the thread
    bool hasFailed = false; // of the thread
    std::thread thread;
};
