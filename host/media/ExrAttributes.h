#pragma once

#include "media/ExrStreams.h"

/// Reads a number of a header as the file has it.
int readHeaderInt(CheckedInput& stream);

/// Steps over the attributes of one header. The library reads most values without regard to the
/// size that the file announces for them and would take what follows for something else: each value
/// is held against its size. Returns false for the empty header that ends the headers of many
/// parts. Throws Iex::InputExc for damage.
bool walkAttributes(CheckedInput& stream);
