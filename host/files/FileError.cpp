#include "files/FileError.h"

#include <cerrno>
#include <system_error>

namespace {

FileError::Fault faultBehind(int error)
{
    bool const isAsked = error == ENOENT || error == ENOTDIR || error == EISDIR ||
                         error == ENAMETOOLONG || error == ELOOP;
    return isAsked ? FileError::Fault::Request : FileError::Fault::Surroundings;
}

} // namespace

FileError::FileError(int systemError)
    : FileError(faultBehind(systemError), describeSystemError(systemError))
{
}

std::string describeSystemError(int error)
{
    switch (error) {
    case ENOENT: return "there is no such file or folder";
    case EACCES:
    case EPERM: return "permission denied";
    case EROFS: return "the file system is read-only";
    case ENOSPC:
    case EDQUOT: return "no space left on the disk; free some and try again";
    case EISDIR: return "it is a folder";
    case ENAMETOOLONG: return "the name is too long";
    default: return std::generic_category().message(error);
    }
}
