#pragma once

#include <filesystem>

namespace bench {

/// Registers what a render costs besides the bare library's work on the same pixels: one picture in
/// each compression, a sequence unless `isQuick`, other kinds of files, and the start alone. The
/// pictures are made in `folder`.
void addFloors(std::filesystem::path const& folder, bool isQuick);

} // namespace bench
