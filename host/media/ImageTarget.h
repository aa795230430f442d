#pragma once

#include "files/TemporaryFile.h"

#include <filesystem>

// Files that become pictures, with failures of the files as ImageFileError.

/// As checkTarget.
void checkImageTarget(std::filesystem::path const& target);

/// As the constructor of TemporaryFile.
TemporaryFile makeTemporaryImage(std::filesystem::path const& target);

/// As TemporaryFile::takeStream and TemporaryFile::publish.
std::FILE* takeImageStream(TemporaryFile& temporary);
void publishImage(TemporaryFile& temporary);

/// Throws ImageFileError: what was written is not there, or not as it was written.
[[noreturn]] void throwNotAsWritten(TemporaryFile const& temporary);
