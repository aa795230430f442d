#include "editor/model/document/FileWatch.h"

#include <array>
#include <cstring>
#include <sys/inotify.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

/// Files are replaced by renaming, so it is their folders that are watched.
constexpr std::uint32_t kinds =
    IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ONLYDIR;

} // namespace

FileWatch::FileWatch() : descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

FileWatch::~FileWatch()
{
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

void FileWatch::watch(std::vector<std::filesystem::path> const& files)
{
    auto const before = std::exchange(folders, {});
    for (std::filesystem::path const& file : files) {
        add(file, file);
        std::error_code failure;
        std::filesystem::path const real = std::filesystem::canonical(file, failure);
        if (!failure && real != file) {
            add(file, real);
        }
    }
    for (auto const& [number, names] : before) {
        if (!folders.contains(number)) {
            ::inotify_rm_watch(descriptor, number);
        }
    }
}

void FileWatch::add(std::filesystem::path const& file, std::filesystem::path const& place)
{
    std::filesystem::path const folder = place.has_parent_path() ? place.parent_path() : ".";
    int const number = ::inotify_add_watch(descriptor, folder.c_str(), kinds);
    if (number >= 0) {
        folders[number][place.filename().string()].insert(file);
    }
}

std::set<std::filesystem::path> FileWatch::read()
{
    std::set<std::filesystem::path> touched;
    alignas(inotify_event) std::array<char, 16384> bytes{};
    for (ssize_t got = 0; (got = ::read(descriptor, bytes.data(), bytes.size())) > 0;) {
        for (std::size_t place = 0; place < static_cast<std::size_t>(got);) {
            inotify_event event{};
            std::memcpy(&event, bytes.data() + place, sizeof event);
            char const* const name = bytes.data() + place + sizeof event;
            place += sizeof event + event.len;
            bool const isLost = (event.mask & IN_Q_OVERFLOW) != 0;
            for (auto const& [number, names] : folders) {
                for (auto const& [watched, files] : names) {
                    if (isLost || (number == event.wd && event.len > 0 && watched == name)) {
                        touched.insert(files.begin(), files.end());
                    }
                }
            }
        }
    }
    return touched;
}
