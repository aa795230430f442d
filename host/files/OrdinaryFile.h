#pragma once

#include <filesystem>

/// Opens a file for reading and returns the descriptor, which the caller closes. A pipe, socket or
/// device is refused without waiting for it, also where it takes a file's place at this moment. "-"
/// is standard input where that is offered (StandardFiles.h). Throws FileError, and what reading
/// standard input throws. Any thread.
int openOrdinaryFile(std::filesystem::path const& file);
