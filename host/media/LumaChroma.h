#pragma once

#include "media/ExrChannels.h"
#include "pluginAPI/IxTile.h"

#include <ImathVec.h>
#include <ImfHeader.h>
#include <ImfRgbaFile.h>
#include <memory>
#include <vector>

class ExrPartInput;

/// Weights of red, green and blue in a file's luminance: by its chromaticities, or those of ITU-R
/// BT.709 where it has none or impossible ones.
Imath::V3f luminanceWeightsOf(Imf::Header const& header);

/// Reads pictures of luminance and sub-sampled chroma as red, green, blue (and alpha) in half: the
/// missing chroma is interpolated over 27 rows and columns. Rows are cheapest in order.
class LumaChromaReader {
public:
    LumaChromaReader(std::unique_ptr<ExrPartInput> part, ExrColour const& colour);
    ~LumaChromaReader();

    /// Fills a half tile of components RGB or RGBA. Throws what the library and the stream throw.
    void readRows(IxTile const& tile);

    /// Error number that the file met, or 0.
    int getSystemError() const;

private:
    std::unique_ptr<ExrPartInput> stream;
    std::unique_ptr<Imf::RgbaInputFile> pixels;
    std::vector<Imf::Rgba> line;
};

/// Turns a half tile of RY, Y, BY (and alpha), chroma at every pixel, into red, green, blue.
void convertFullLumaChroma(IxTile const& tile, Imath::V3f const& weights);

/// Copies the first component of a half or float tile to the second and third.
void spreadLuminance(IxTile const& tile);
