// The bare library's way with a file, as a yardstick for whole programs:
//   exrFiles make FILE WIDTH HEIGHT       writes a half RGBA picture, ZIP
//   exrFiles copy INPUT OUTPUT THREADS    reads and writes it, a few blocks at a time

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfThreading.h>
#include <half.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr char const* channels[] = {"R", "G", "B", "A"};
constexpr int rowsAtOnce = 128; // eight blocks of ZIP

/// A window of rows with four halves a pixel.
class Rows {
public:
    explicit Rows(int pictureWidth)
        : width(pictureWidth), samples(std::size_t(width) * rowsAtOnce * 4)
    {
    }

    Imf::FrameBuffer makeFrameBuffer(int firstRow)
    {
        Imf::FrameBuffer frameBuffer;
        std::size_t const rowSamples = std::size_t(width) * 4;
        half* const origin = samples.data() - static_cast<std::ptrdiff_t>(rowSamples) * firstRow;
        for (int channel = 0; channel < 4; ++channel) {
            frameBuffer.insert(channels[channel],
                               Imf::Slice(Imf::HALF, reinterpret_cast<char*>(origin + channel),
                                          4 * sizeof(half), rowSamples * sizeof(half)));
        }
        return frameBuffer;
    }

    half* getRow(int row) { return &samples[std::size_t(width) * 4 * std::size_t(row)]; }

private:
    int width;
    std::vector<half> samples;
};

/// Soft light over several stops, and a little noise as a camera or a renderer leaves it.
void makeRow(int width, int y, half* row, std::mt19937& random)
{
    std::uniform_real_distribution<float> noise(-0.004F, 0.004F);
    for (int x = 0; x < width; ++x) {
        float const u = static_cast<float>(x) / 900.0F;
        float const v = static_cast<float>(y) / 700.0F;
        float const stops = 2.0F * std::sin(u + std::cos(v)) + 1.5F * std::sin(v * 1.7F) - 2.0F;
        float const light = std::exp2(stops);
        row[4 * x] = light * (1.0F + noise(random));
        row[4 * x + 1] = light * (0.8F + 0.1F * std::sin(u)) * (1.0F + noise(random));
        row[4 * x + 2] = light * (0.6F + 0.2F * std::cos(v)) * (1.0F + noise(random));
        row[4 * x + 3] = 1.0F;
    }
}

void makeFile(char const* file, int width, int height)
{
    Imf::Header header(width, height);
    header.compression() = Imf::ZIP_COMPRESSION;
    for (char const* channel : channels) {
        header.channels().insert(channel, Imf::Channel(Imf::HALF));
    }
    Imf::OutputFile output(file, header);
    Rows rows(width);
    std::mt19937 random(1);
    for (int y = 0; y < height; y += rowsAtOnce) {
        int const nbRows = std::min(rowsAtOnce, height - y);
        for (int row = 0; row < nbRows; ++row) {
            makeRow(width, y + row, rows.getRow(row), random);
        }
        output.setFrameBuffer(rows.makeFrameBuffer(y));
        output.writePixels(nbRows);
    }
}

void copyFile(char const* inputFile, char const* outputFile, int nbThreads)
{
    Imf::setGlobalThreadCount(nbThreads > 1 ? nbThreads : 0);
    Imf::InputFile input(inputFile);
    Imf::OutputFile output(outputFile, input.header());
    Imath::Box2i const window = input.header().dataWindow();
    Rows rows(window.max.x - window.min.x + 1);
    for (int y = window.min.y; y <= window.max.y; y += rowsAtOnce) {
        int const last = std::min(y + rowsAtOnce - 1, window.max.y);
        Imf::FrameBuffer const frameBuffer = rows.makeFrameBuffer(y);
        input.setFrameBuffer(frameBuffer);
        input.readPixels(y, last);
        output.setFrameBuffer(frameBuffer);
        output.writePixels(last - y + 1);
    }
}

} // namespace

int main(int nbArguments, char** arguments)
{
    std::string const command = nbArguments == 5 ? arguments[1] : "";
    try {
        if (command == "make") {
            makeFile(arguments[2], std::atoi(arguments[3]), std::atoi(arguments[4]));
        } else if (command == "copy") {
            copyFile(arguments[2], arguments[3], std::atoi(arguments[4]));
        } else {
            std::fputs("exrFiles make FILE WIDTH HEIGHT | copy INPUT OUTPUT THREADS\n", stderr);
            return 2;
        }
    } catch (std::exception const& error) {
        std::fprintf(stderr, "exrFiles: %s\n", error.what());
        return 1;
    }
    return 0;
}
