#include "shots/ShotCheck.h"

#include "support/MediaSupport.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfMultiPartOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <array>
#include <cmath>
#include <limits>

namespace {

class ShotCheckTest : public MediaTest {
protected:
    std::filesystem::path frame(int number) const
    {
        return file("s." + std::to_string(number) + ".exr");
    }

    /// "5 missing" and so on.
    std::vector<std::string> check(std::string const& name, bool countsValues = false)
    {
        ShotCheckRequest request;
        request.input = file(name).string();
        request.countsValues = countsValues;
        last = checkShot(request, {});
        std::vector<std::string> faults;
        for (FrameFault const& fault : last.faults) {
            faults.push_back(std::to_string(fault.frame) + " " + nameFault(fault.kind));
        }
        return faults;
    }

    ShotCheck last;
};

using Faults = std::vector<std::string>;

TEST_F(ShotCheckTest, EveryKindOfFaultIsNamedOfItsFrame)
{
    for (int number = 1; number <= 9; ++number) {
        writeExr(frame(number), {.channels = {{"R"}, {"G"}, {"B"}, {"Z", Imf::FLOAT}}});
    }
    std::filesystem::resize_file(frame(2), std::filesystem::file_size(frame(2)) - 20);
    saveBytes(frame(3), "no picture");
    std::filesystem::remove(frame(5));
    writeExr(frame(6), {.channels = {{"R"}, {"G"}, {"B"}}, .tileSize = 16});
    writeExr(frame(7), {.channels = {{"R"}, {"G"}, {"B", Imf::FLOAT}, {"Z", Imf::FLOAT}},
                        .dataWindow = {{0, 0}, {7, 8}},
                        .displayWindow = {{0, 0}, {7, 8}}});
    writeExr(frame(8), {.channels = {{"R"}, {"G"}, {"B"}, {"Z", Imf::FLOAT}},
                        .dataWindow = {{1, 0}, {36, 52}}});
    EXPECT_EQ(check("s.#.exr"), (Faults{"2 unreadable", "3 unreadable", "5 missing", "6 channels",
                                        "7 size", "7 channels", "8 size"}));
    EXPECT_EQ(last.nbRead, 6U);
    EXPECT_NE(last.faults[3].message.find("lacks Z (float)"), std::string::npos);
    EXPECT_NE(last.faults[6].message.find("data window"), std::string::npos);
}

TEST_F(ShotCheckTest, WithoutAMajorityNoFrameIsOdd)
{
    writeExr(frame(1), {.dataWindow = {{0, 0}, {9, 9}}});
    writeExr(frame(2), {.dataWindow = {{0, 0}, {8, 9}}});
    EXPECT_EQ(check("s.#.exr"), Faults());
    EXPECT_EQ(check("s.1.exr"), Faults());
    std::filesystem::remove(frame(1));
    EXPECT_EQ(check("s.1.exr"), Faults{"0 unreadable"});
}

/// Two parts with R and G; G of the second one has a NaN and both infinities.
void writeTwoParts(std::filesystem::path const& file)
{
    constexpr int width = 40;
    constexpr int height = 37; // more than one block
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const infinity = std::numeric_limits<float>::infinity();
    std::vector<float> samples(static_cast<std::size_t>(width) * height, 1.0F);
    samples[0] = -nan;
    samples[1] = infinity;
    samples.back() = -infinity;
    std::array<Imf::Header, 2> headers = {Imf::Header(width, height), Imf::Header(width, height)};
    std::array<char const*, 2> const names = {"a", "b"};
    for (std::size_t part = 0; part < 2; ++part) {
        headers[part].setName(names[part]);
        headers[part].setType(Imf::SCANLINEIMAGE);
        headers[part].channels().insert("R", Imf::Channel(Imf::FLOAT));
        headers[part].channels().insert("G", Imf::Channel(Imf::FLOAT));
    }
    Imf::MultiPartOutputFile output(file.c_str(), headers.data(), 2);
    std::vector<float> const plain(samples.size(), 0.5F);
    for (int part = 0; part < 2; ++part) {
        Imf::FrameBuffer buffer;
        auto const insert = [&](char const* name, std::vector<float> const& from) {
            auto* const first = const_cast<char*>(reinterpret_cast<char const*>(from.data()));
            buffer.insert(name,
                          Imf::Slice(Imf::FLOAT, first, sizeof(float), sizeof(float) * width));
        };
        insert("R", plain);
        insert("G", part == 1 ? samples : plain);
        Imf::OutputPart target(output, part);
        target.setFrameBuffer(buffer);
        target.writePixels(height);
    }
}

TEST_F(ShotCheckTest, SpecialValuesOfEveryPartAreCounted)
{
    writeTwoParts(frame(1));
    EXPECT_EQ(check("s.1.exr", true), Faults{"0 values"});
    ASSERT_EQ(last.faults[0].channels.size(), 1U);
    ChannelScan const& channel = last.faults[0].channels[0];
    EXPECT_EQ(channel.part, 1U);
    EXPECT_EQ(channel.name, "G");
    EXPECT_EQ(channel.nbNan, 1U);
    EXPECT_EQ(channel.nbInfinite, 2U);
    EXPECT_EQ(last.faults[0].message, "G: 1 NaN 2 infinite in part 1");
}

TEST_F(ShotCheckTest, SpecialValuesAreCounted)
{
    writeExr(frame(1), {.channels = {{"R"}, {"Z"}}, .values = {{"R", 1.0F}, {"Z", INFINITY}}});
    writeExr(frame(2), {.channels = {{"R"}, {"Z"}},
                        .tileSize = 16,
                        .hasLevels = true,
                        .dataWindow = {{0, 0}, {31, 31}},
                        .values = {{"R", NAN}, {"Z", 2.0F}}});
    EXPECT_EQ(check("s.#.exr"), Faults());
    EXPECT_EQ(check("s.#.exr", true), (Faults{"1 values", "2 values"}));
    ASSERT_EQ(last.faults[0].channels.size(), 1U);
    EXPECT_EQ(last.faults[0].channels[0].name, "Z");
    EXPECT_EQ(last.faults[0].channels[0].nbInfinite, 37U * 53U);
    EXPECT_EQ(last.faults[0].channels[0].nbNan, 0U);
    ASSERT_EQ(last.faults[1].channels.size(), 1U);
    // All resolutions: 32, 16, 8, 4, 2 and 1 pixels wide.
    EXPECT_EQ(last.faults[1].channels[0].nbNan, 1024U + 256U + 64U + 16U + 4U + 1U);
}

} // namespace
