#pragma once

#include "files/MemoryFile.h"

#include <filesystem>
#include <initializer_list>

/// Reads standard input to its end. What begins like a picture of a known kind may be as long as
/// memory lets it, everything else (projects, lists of frames, other pictures) 64 MiB: some inputs
/// have no end. Throws FileError, and Interrupted where StopSignals are asked to stop while it
/// waits.
MemoryFile readStandardInput();

/// Throws UsageError where one of the files is standard input and that is a terminal, at which
/// nobody types pictures.
void refuseTerminal(std::initializer_list<std::filesystem::path> pictures);
