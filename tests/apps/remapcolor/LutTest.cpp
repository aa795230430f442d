// "lut" as its readers meet it: OpenColorIO against pictures that "render" makes.

#include "apps/remapcolor/Program.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <OpenColorIO/OpenColorIO.h>
#include <array>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>

namespace {

namespace Ocio = OCIO_NAMESPACE;
using Names = std::vector<std::string>;
using Color = std::array<float, 3>;

constexpr int side = 256; // of a picture of all halves

/// Every half in all three channels.
std::vector<std::array<std::uint16_t, 3>> listHalves()
{
    std::vector<std::array<std::uint16_t, 3>> halves(side * side);
    for (std::size_t bits = 0; bits < halves.size(); ++bits) {
        halves[bits].fill(static_cast<std::uint16_t>(bits));
    }
    return halves;
}

template <typename Pixels>
Imf::FrameBuffer makeFrame(Pixels& pixels, Imf::PixelType type)
{
    Imf::FrameBuffer frame;
    char* base = reinterpret_cast<char*>(pixels.data());
    for (char const* name : {"R", "G", "B"}) {
        frame.insert(name, Imf::Slice(type, base, sizeof(pixels[0]), sizeof(pixels[0]) * side));
        base += sizeof(pixels[0]) / 3;
    }
    return frame;
}

class LutTest : public testing::Test {
protected:
    ProgramResult run(Names words, Names const& more = {}) const
    {
        words.insert(words.end(), more.begin(), more.end());
        return Program(folder, words).wait();
    }

    /// What "render" makes of every half.
    std::vector<Color> render(Names const& look) const
    {
        auto halves = listHalves();
        Imf::Header header(side, side);
        for (char const* name : {"R", "G", "B"}) {
            header.channels().insert(name, Imf::Channel(Imf::HALF));
        }
        {
            Imf::OutputFile file((folder.path / "in.exr").c_str(), header);
            file.setFrameBuffer(makeFrame(halves, Imf::HALF));
            file.writePixels(side);
        }
        EXPECT_EQ(run({"render", "in.exr", "-o", "out.exr", "--depth", "32"}, look).status, 0);
        std::vector<Color> colours(halves.size());
        Imf::InputFile file((folder.path / "out.exr").c_str());
        file.setFrameBuffer(makeFrame(colours, Imf::FLOAT));
        file.readPixels(0, side - 1);
        return colours;
    }

    /// What OpenColorIO's library makes of a picture of every half.
    std::vector<Color> apply(char const* table) const
    {
        Ocio::ClearAllCaches();
        auto const transform = Ocio::FileTransform::Create();
        transform->setSrc((folder.path / table).c_str());
        auto const processor =
            Ocio::Config::CreateRaw()->getProcessor(transform)->getOptimizedCPUProcessor(
                Ocio::BIT_DEPTH_F16, Ocio::BIT_DEPTH_F32, Ocio::OPTIMIZATION_DEFAULT);
        auto halves = listHalves();
        std::vector<Color> colours(halves.size());
        constexpr auto automatic = Ocio::AutoStride;
        Ocio::PackedImageDesc const from(halves.data(), side, side, 3, Ocio::BIT_DEPTH_F16,
                                         automatic, automatic, automatic);
        Ocio::PackedImageDesc to(colours.data(), side, side, 3, Ocio::BIT_DEPTH_F32, automatic,
                                 automatic, automatic);
        processor->apply(from, to);
        return colours;
    }

    /// What ociochecklut prints for a grey.
    std::string check(char const* table, float grey) const
    {
        std::ostringstream command;
        command.precision(9);
        command << "ociochecklut " << (folder.path / table) << ' ' << grey << ' ' << grey << ' '
                << grey << " 2>&1 > " << (folder.path / "checked");
        EXPECT_EQ(std::system(command.str().c_str()), 0);
        std::string const text = loadBytes(folder.path / "checked");
        return text.substr(0, text.find('\n'));
    }

    TestFolder folder;
};

float makeFinite(float value)
{
    constexpr float most = std::numeric_limits<float>::max();
    return std::isnan(value) ? 0.0F : std::isinf(value) ? std::copysign(most, value) : value;
}

/// As ociochecklut does.
std::string print(Color const& colour)
{
    std::ostringstream text;
    text.precision(7);
    text << colour[0] << ' ' << colour[1] << ' ' << colour[2];
    return text.str();
}

TEST_F(LutTest, ClfHoldsTheResultOfEveryHalf)
{
    std::vector<Names> const looks = {
        {},
        {"--no-adjust"},
        {"-s", "Linear.Gamma.Green=2.2", "-s", "Linear.Output Level.Max.Blue=3", "--mix", "0.3"},
        {"--mode", "EXRDisplay", "-s", "EXRDisplay.Exposure=1@0,2@10", "--frame", "3.5", "--curve",
         "red=0,0.1 0.5,0.2 1,2"},
        {"-s", "Linear.Gamma=-0.01", "--no-adjust"}}; // infinite nearly everywhere
    for (Names const& look : looks) {
        std::vector<Color> const wanted = render(look);
        ASSERT_EQ(run({"lut", "-o", "look.clf"}, look).status, 0);
        std::vector<Color> const got = apply("look.clf");
        for (std::size_t bits = 0; bits < wanted.size(); ++bits) {
            for (std::size_t channel = 0; channel < 3; ++channel) {
                ASSERT_EQ(got[bits][channel], makeFinite(wanted[bits][channel]))
                    << testing::PrintToString(look) << " half " << bits << " channel " << channel;
            }
        }
    }
}

TEST_F(LutTest, ClfOfHalfDepthHoldsHalves)
{
    Names const look = {"-s", "Linear.Gamma=2.2", "--depth", "16"};
    ASSERT_EQ(run({"lut", "-o", "look.clf"}, look).status, 0);
    EXPECT_NE(loadBytes(folder.path / "look.clf").find("outBitDepth=\"16f\""), std::string::npos);
    for (Color const& colour : apply("look.clf")) {
        bool const isStandIn = std::abs(colour[0]) == std::numeric_limits<float>::max();
        ASSERT_TRUE(isStandIn || colour[0] == static_cast<float>(half(colour[0]))) << colour[0];
    }
}

TEST_F(LutTest, CheckerGivesWhatRenderMakesOfTheTablesPlaces)
{
    Names const look = {"-s",      "Linear.Gamma=2.2",     "-s", "Linear.Gamma.Blue=1.5",
                        "--curve", "red=0,0.1 0.5,0.2 1,2"};
    Names const domain = {"--domain", "-2,6", "--size", "33"};
    ASSERT_EQ(run({"lut", "-o", "look.clf"}, look).status, 0);
    for (char const* table : {"look.cube", "look.spi1d"}) {
        Names words = {"lut", "-o", table};
        words.insert(words.end(), domain.begin(), domain.end());
        ASSERT_EQ(run(words, look).status, 0);
    }
    std::vector<Color> const wanted = render(look);
    for (float const grey : {-2.0F, -0.25F, 0.0F, 0.5F, 0.75F, 1.0F, 3.25F, 6.0F}) {
        std::string const colour = print(wanted[half(grey).bits()]);
        for (char const* table : {"look.clf", "look.cube", "look.spi1d"}) {
            EXPECT_EQ(check(table, grey), colour) << table << " at " << grey;
        }
    }
    for (float const grey : {5.9604645e-8F, 0.18005371F, 65504.0F, -65504.0F}) {
        EXPECT_EQ(check("look.clf", grey), print(wanted[half(grey).bits()])) << grey;
    }
}

TEST_F(LutTest, SaysWhatTheTableLacks)
{
    struct Case {
        Names words;
        int status;
        std::string said; ///< in one of the lines; "!" before what is in none
    };
    Names const clamp = {"lut", "-o", "a.cube", "-s", "Linear.Clamp=true"};
    for (auto const& [words, status, said] :
         {Case{{"lut", "-o", "a.clf"}, 0, "alpha is not in the table"},
          Case{{"lut", "-o", "a.clf", "-s", "Linear.Gamma=0"},
               0,
               "infinity is 3.4028235e+38 at 32768 of the 65536 places"},
          Case{{"lut", "-o", "a.clf", "--no-adjust"}, 0, "NaN is 0 at 2046 of the 65536"},
          Case{{"lut", "-o", "a.cube", "-q"}, 0, "values below 0 and above 1 get"},
          Case{{"lut", "-o", "a.cube", "--domain", "-65504,9"}, 0, "values above 9 get"},
          Case{clamp, 0, "!the table clamps"},
          Case{clamp, 0, "!between its places"},
          Case{{"lut", "-o", "a.spi1d", "-s", "Linear.Gamma=2.2"}, 0, "is off by up to 0.0064"},
          Case{{"lut", "-o", "a.clf", "-s", "Mix=0@1,1@5", "-f", "2"}, 0, "as they are at time 2"},
          Case{{"lut", "-o", "a.clf", "-s", "Mix=0@1,1@5"}, 2, "add --frame NUMBER"},
          Case{{"lut", "-o", "a.clf", "--mask", "m.exr", "-q"}, 0, "\"m.exr\" is not in the table"},
          Case{{"lut", "-o", "a.clf", "--mask-invert"}, 2, "add --mask FILE"},
          Case{{"lut", "-o", "a.clf", "--domain", "0,1"}, 2, "are for .cube and .spi1d"},
          Case{{"lut", "-o", "a.cube", "--domain", "1,1"}, 2, "the lower one first"},
          Case{{"lut", "-o", "a.cube", "--domain", "0,1,2"}, 2, "takes two numbers"},
          Case{{"lut", "-o", "a.cube", "--domain", "0,1e39"}, 2, "takes two numbers"},
          Case{{"lut", "-o", "a.cube", "--size", "65537"}, 2, "from 2 to 65536"},
          Case{{"lut", "-o", "a.exr"}, 2, "must end in .clf, .cube or .spi1d"},
          Case{{"lut"}, 2, "add -o OUT.clf"},
          Case{{"lut", "-o", "there/a.clf"}, 2, "does not exist"}}) {
        ProgramResult const result = run(words);
        std::string lines;
        for (std::string const& line : result.errors) {
            lines += line + "\n";
        }
        bool const isAbsent = said.starts_with('!');
        bool const isSaid = lines.find(said.substr(isAbsent ? 1 : 0)) != std::string::npos;
        EXPECT_EQ(result.status, status) << testing::PrintToString(words);
        EXPECT_NE(isSaid, isAbsent) << said << "\n" << lines;
        EXPECT_EQ(folder.list().empty(), status != 0) << testing::PrintToString(words);
        for (std::string const& name : folder.list()) {
            std::filesystem::remove(folder.path / name);
        }
    }
}

} // namespace
