#include "media/ImageTarget.h"

#include "files/FileError.h"
#include "media/ErrorText.h"

namespace {

template <typename Action>
auto withImageErrors(std::filesystem::path const& target, Action const& action)
{
    try {
        return action();
    } catch (FileError const& error) {
        bool const isAsked = error.getFault() == FileError::Fault::Request;
        throwWriteError(isAsked ? ImageFailure::Request : ImageFailure::Surroundings, target,
                        error.what());
    }
}

} // namespace

void checkImageTarget(std::filesystem::path const& target)
{
    withImageErrors(target, [&target] { checkTarget(target); });
}

TemporaryFile makeTemporaryImage(std::filesystem::path const& target)
{
    return withImageErrors(target, [&target] { return TemporaryFile(target); });
}

std::FILE* takeImageStream(TemporaryFile& temporary)
{
    return withImageErrors(temporary.getTarget(), [&temporary] { return temporary.takeStream(); });
}

void publishImage(TemporaryFile& temporary)
{
    withImageErrors(temporary.getTarget(), [&temporary] { temporary.publish(); });
}
