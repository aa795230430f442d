#pragma once

#include "editor/model/picture/NodeChain.h"
#include "editor/model/picture/ViewTransform.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// What is shown of each value that a sample of 8 or 16 bit can have, for every channel apart. The
/// tool takes every channel on its own, so a picture of such samples is shown by look-ups, as it is
/// without them, bit for bit.
class ValueTables {
public:
    /// Whether a picture of this format is shown so by that view.
    static bool canShow(IxPixelFormat const& format, ScreenEncoder const& encoder);

    /// What a chain for them is made with: a picture of all values.
    static ImageInfo describeValues(ImageInfo const& picture);

    explicit ValueTables(IxPixelFormat const& pixelFormat) : format(pixelFormat) {}

    /// Works them out for the values that `chain` gives, or for the values themselves.
    void fill(NodeChain const* chain, double time, ScreenEncoder const& encoder);

    /// 0xffRRGGBB for the pixels of a row, each so many bytes from its start.
    void show(std::byte const* row, std::span<std::uint32_t const> offsets,
              std::span<std::uint32_t> screen) const;

private:
    IxPixelFormat format;
    std::array<std::vector<std::uint8_t>, 4> bytes; ///< red, green, blue, alpha by sample
    std::array<std::size_t, 3> shown{};             ///< which of them is red, green and blue
};
