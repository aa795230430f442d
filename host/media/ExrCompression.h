#pragma once

#include "media/MediaOptions.h"

#include <ImfChannelList.h>
#include <ImfHeader.h>
#include <string>
#include <vector>

/// Gives `header` the chosen compression, or leaves it its own. A chosen level of DWAA or DWAB is
/// stored; without one, the level that the header names counts, which the library would not heed.
void applyCompression(std::optional<CompressionChoice> const& choice, Imf::Header& header);

/// Of `channels`, which are copied, those that packing them anew with `now` can change; they were
/// packed with `before`.
///
///   PXR24       rounds float to 24 bits; what is rounded stays as it is
///   B44, B44A   change half; most often the first time only
///   DWAA, DWAB  change the half and float channels that are named R, G, B, Y, RY or BY, in any
///               layer; most often each time anew
std::vector<std::string> listLossyChannels(Imf::ChannelList const& channels,
                                           Imf::Compression before, Imf::Compression now);

/// Whether the header's compression leaves each of its channels as large as it is: B44 and B44A
/// pack half only.
bool packsNothing(Imf::Header const& header);

/// "DWAA" and the like.
std::string nameCompression(Imf::Compression compression);
