#pragma once

#include <string>
#include <string_view>

/// Makes sure that descriptors 0 to 2 are taken, so that no picture that is opened later gets one
/// of them and messages written into it. A closed standard output stays one that cannot be written.
void holdStandardStreams();

/// Writes data to standard output at once and completely. A reader that closes
/// its pipe has seen enough: the rest is dropped. Throws SurroundingsError, as for a full disk.
void writeStandardOutput(std::string const& data);

/// Writes to standard error in one piece, so that lines of several processes do not mix; what
/// cannot be written is lost. Not through C's stderr, which has a buffer of its own.
void writeStandardError(std::string_view text);

/// All that standard input has. Throws SurroundingsError.
std::string readStandardInput();
