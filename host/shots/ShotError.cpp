// Failures of frames, for people and schedulers.

#include "shots/ShotError.h"

#include "media/ImageFailure.h"

#include <new>
#include <system_error>

namespace {

ShotFailure toShotFailure(ImageFailure kind)
{
    switch (kind) {
    case ImageFailure::Request: return ShotFailure::Request;
    case ImageFailure::File: return ShotFailure::Frames;
    case ImageFailure::Surroundings: return ShotFailure::Surroundings;
    }
    return ShotFailure::Frames;
}

constexpr char const* outOfMemory = "out of memory; close other programs or use fewer --threads";

std::string describeRefusal(std::system_error const& error)
{
    if (error.code() == std::errc::resource_unavailable_try_again) {
        return "no thread can be started: out of memory or too many processes; close other "
               "programs or use fewer --threads";
    }
    if (error.code() == std::errc::not_enough_memory) {
        return outOfMemory;
    }
    if (error.code() == std::errc::too_many_files_open ||
        error.code() == std::errc::too_many_files_open_in_system) {
        return "too few file descriptors; raise the limit (ulimit -n)";
    }
    return std::string("the system refused: ") + error.what();
}

} // namespace

int toExitStatus(ShotFailure kind)
{
    constexpr int frames = 1;
    constexpr int request = 2;
    constexpr int surroundings = 3;
    switch (kind) {
    case ShotFailure::Request: return request;
    case ShotFailure::Frames: return frames;
    case ShotFailure::Surroundings: return surroundings;
    }
    return frames;
}

FrameFailure describeFailure(std::exception_ptr const& failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (ImageFileError const& error) {
        return {toShotFailure(error.getKind()), error.what()};
    } catch (ShotError const& error) {
        return {error.getKind(), error.what()};
    } catch (std::bad_alloc const&) {
        return {ShotFailure::Surroundings, outOfMemory};
    } catch (std::system_error const& error) {
        return {ShotFailure::Surroundings, describeRefusal(error)};
    } catch (std::exception const& error) {
        return {ShotFailure::Frames,
                std::string("internal fault, please report it: ") + error.what()};
    } catch (...) {
        return {ShotFailure::Frames, "internal fault, please report it"};
    }
}
