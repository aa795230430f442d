#pragma once

/// A test that runs the built bundle in the test host beside a node of the native tool.

#include "support/InMemoryHost.h"
#include "support/OfxTestHost.h"
#include "support/StandardPixels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using Bytes = std::vector<std::byte>;

/// A look, for both: numbers by the plug-in's names and by the tool's.
struct Look {
    std::string name;
    std::vector<std::pair<std::string, std::string>> names; ///< plug-in's, tool's
    std::vector<OfxTestValue> values;
    std::string curves; ///< as text; empty for none
};

/// Both modes, with and without curves.
std::vector<Look> const& allLooks();

class BundleTest : public ::testing::Test {
protected:
    ~BundleTest() noexcept override = default;

    OfxTestHost& load(OfxTestHost::Traits const& traits = {})
    {
        host = std::make_unique<OfxTestHost>(OFX_BUNDLE, traits);
        return *host;
    }

    /// An instance with images in place.
    OfxImageEffect& makeEffect(OfxTestImage* source, OfxTestImage* output,
                               std::string const& context = OfxText::Context::filter);

    /// The whole picture by one render call.
    Bytes renderAll(OfxImageEffect& effect, OfxTestImage& output);

    /// Random and odd values in that layout.
    static OfxTestImage makePicture(OfxTestImage::Layout const& layout);

    static void apply(Look const& look, OfxImageEffect& effect);

    /// What the native tool makes of the same samples; `toolDepth` as "Output Depth" counts. With a
    /// mask and a mix as its host has them.
    static Bytes renderNative(Look const& look, OfxTestImage& source, int toolDepth,
                              double mix = 1.0);

    std::unique_ptr<OfxTestHost> host;
};
