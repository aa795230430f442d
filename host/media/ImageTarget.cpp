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

void throwNotAsWritten(TemporaryFile const& temporary)
{
    std::error_code ignored;
    bool const isThere = std::filesystem::exists(temporary.getPath(), ignored);
    throwWriteError(ImageFailure::Surroundings, temporary.getTarget(),
                    isThere ? "what was written does not read back; the disk may be full or faulty"
                            : "its temporary file was removed while it was written, or its folder");
}
