#include "media/HeldFile.h"

#include "files/FileError.h"
#include "files/OrdinaryFile.h"
#include "media/ErrorText.h"

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

HeldFile::HeldFile(std::filesystem::path const& file)
    : descriptor(openImageFile(file)), path("/proc/self/fd/" + std::to_string(descriptor))
{
}

HeldFile::~HeldFile()
{
    ::close(descriptor);
}
