#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Makes sure that descriptors 0 to 2 are taken, so that no picture that is opened later gets one
/// of them and messages written into it. A closed standard output stays one that cannot be written.
void holdStandardStreams();

/// Writes data to standard output completely. A reader that closes its pipe has seen enough: the
/// rest is dropped. Throws SurroundingsError, as for a full disk, and Interrupted where StopSignals
/// are asked to stop.
void writeStandardOutput(std::string_view data);

/// Throws UsageError where `file` is standard output and that is a terminal, on which nobody wants
/// bytes of pictures; SurroundingsError where it is closed.
void checkStandardOutput(std::filesystem::path const& file);

/// What a reader is that closes its pipe before the end.
enum class EarlyEnd {
    IsEnough, ///< of text, which can be looked at in part
    IsFailure ///< of a picture
};

/// Writes what was written to the file "-" to standard output. Throws as writeStandardOutput, and
/// SurroundingsError for an early end that is a failure.
void sendStandardFile(EarlyEnd end);

/// Writes to standard error in one piece, so that lines of several processes do not mix; what
/// cannot be written is lost. Not through C's stderr, which has a buffer of its own.
void writeStandardError(std::string_view text);
