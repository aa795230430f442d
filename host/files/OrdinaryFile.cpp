#include "files/OrdinaryFile.h"

#include "files/FileError.h"
#include "files/StandardFiles.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int openOrdinaryFile(std::filesystem::path const& file)
{
    if (isStandardStream(file)) {
        if (MemoryFile const* const input = StandardFiles::get().openInput()) {
            // Opened anew and not shared: each has a place of its own in the file.
            return openOrdinaryFile(input->getPath());
        }
    }
    // Without O_NONBLOCK, opening a pipe waits for its writer.
    int const descriptor = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        int const error = errno;
        if (error == ENXIO) { // a socket
            throw FileError(FileError::Fault::Request, "it is not an ordinary file");
        }
        throw FileError(error);
    }
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        int const error = errno;
        ::close(descriptor);
        throw FileError(error);
    }
    if (!S_ISREG(status.st_mode)) {
        ::close(descriptor);
        throw FileError(FileError::Fault::Request,
                        S_ISDIR(status.st_mode) ? "it is a folder" : "it is not an ordinary file");
    }
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    return descriptor;
}
