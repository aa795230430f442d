#include "media/HeldFile.h"

#include "files/FileError.h"
#include "files/OrdinaryFile.h"
#include "media/ErrorText.h"

#include <array>
#include <cerrno>
#include <string>
#include <unistd.h>

int openImageFile(std::filesystem::path const& file)
{
    try {
        return openOrdinaryFile(file);
    } catch (FileError const& error) {
        bool const isFile = error.getFault() == FileError::Fault::Request;
        throwReadError(isFile ? ImageFailure::File : ImageFailure::Surroundings, file,
                       error.what());
    }
}

std::optional<FileKind> readFileKind(std::filesystem::path const& file)
{
    int const descriptor = openImageFile(file);
    std::array<char, fileKindBytes> start{};
    ssize_t const count = ::pread(descriptor, start.data(), start.size(), 0);
    int const error = errno;
    ::close(descriptor);
    if (count < 0) {
        throwSystemReadError(error, file);
    }
    return recogniseFileKind({start.data(), static_cast<std::size_t>(count)});
}

HeldFile::HeldFile(std::filesystem::path const& file)
    : descriptor(openImageFile(file)), path("/proc/self/fd/" + std::to_string(descriptor))
{
}

HeldFile::~HeldFile()
{
    ::close(descriptor);
}
