#pragma once

#include <string>

/// Makes sure that descriptors 0 to 2 are taken, so that no picture that is opened later gets one
/// of them and messages written into it. A closed standard output stays one that cannot be written.
void holdStandardStreams();

/// Writes data to standard output at once and completely. Throws SurroundingsError: a full disk, a
/// closed pipe.
void writeStandardOutput(std::string const& data);
