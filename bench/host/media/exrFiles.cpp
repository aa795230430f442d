// The bare library's way with a file, as a yardstick for whole programs:
//   exrFiles make FILE WIDTH HEIGHT COMPRESSION TILE     writes a half RGBA picture; TILE 0: rows
//   exrFiles copy INPUT OUTPUT THREADS                   reads and writes it, some blocks at a time
//   exrFiles floor INPUT RESULT OUTPUT THREADS           reads INPUT and writes RESULT's pixels
//
// What pixels cost to pack depends on them: "floor" is what the library takes for the pixels that a
// program writes. It prints how long it took to get them, in seconds on the clock and of the
// processor, which are not part of it.

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfThreading.h>
#include <ImfTiledInputFile.h>
#include <ImfTiledOutputFile.h>
#include <half.h>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr char const* channels[] = {"R", "G", "B", "A"};
constexpr char const* compressions[] = {"none",  "rle", "zips", "zip",  "piz",
                                        "pxr24", "b44", "b44a", "dwaa", "dwab"};
constexpr int rowsAtOnce = 256; // the highest block, DWAB's, and several of the others

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

/// A picture of rows or tiles; tiles are read and written a run of whole rows of them at a time.
class Input {
public:
    explicit Input(char const* file)
    {
        rows = std::make_unique<Imf::InputFile>(file);
        if (rows->header().hasTileDescription()) {
            tiles = std::make_unique<Imf::TiledInputFile>(file);
        }
    }

    Imf::Header const& getHeader() const { return rows->header(); }
    int getWidth() const
    {
        return getHeader().dataWindow().max.x - getHeader().dataWindow().min.x + 1;
    }

    void read(Imf::FrameBuffer const& frame, int first, int last)
    {
        if (tiles == nullptr) {
            rows->setFrameBuffer(frame);
            rows->readPixels(first, last);
            return;
        }
        int const height = static_cast<int>(tiles->tileYSize());
        tiles->setFrameBuffer(frame);
        tiles->readTiles(0, tiles->numXTiles() - 1, first / height, last / height);
    }

private:
    std::unique_ptr<Imf::InputFile> rows;
    std::unique_ptr<Imf::TiledInputFile> tiles;
};

class Output {
public:
    Output(char const* file, Imf::Header const& header)
    {
        if (header.hasTileDescription()) {
            tiles = std::make_unique<Imf::TiledOutputFile>(file, header);
        } else {
            rows = std::make_unique<Imf::OutputFile>(file, header);
        }
    }

    void write(Imf::FrameBuffer const& frame, int first, int last)
    {
        if (tiles == nullptr) {
            rows->setFrameBuffer(frame);
            rows->writePixels(last - first + 1);
            return;
        }
        int const height = static_cast<int>(tiles->tileYSize());
        tiles->setFrameBuffer(frame);
        tiles->writeTiles(0, tiles->numXTiles() - 1, first / height, last / height);
    }

private:
    std::unique_ptr<Imf::OutputFile> rows;
    std::unique_ptr<Imf::TiledOutputFile> tiles;
};

/// Calls `work` for all rows of a picture that begins with row 0, some at a time.
void forRows(Imf::Header const& header, std::function<void(int first, int last)> const& work)
{
    int const bottom = header.dataWindow().max.y;
    for (int y = 0; y <= bottom; y += rowsAtOnce) {
        work(y, std::min(y + rowsAtOnce - 1, bottom));
    }
}

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

void makeFile(char** arguments)
{
    int const width = std::atoi(arguments[1]);
    int const tile = std::atoi(arguments[4]);
    Imf::Header header(width, std::atoi(arguments[2]));
    auto const* const name =
        std::find(std::begin(compressions), std::end(compressions), std::string(arguments[3]));
    header.compression() = static_cast<Imf::Compression>(name - std::begin(compressions));
    if (tile > 0) {
        auto const side = static_cast<unsigned>(tile);
        header.setTileDescription(Imf::TileDescription(side, side));
    }
    for (char const* channel : channels) {
        header.channels().insert(channel, Imf::Channel(Imf::HALF));
    }
    Output output(arguments[0], header);
    Rows rows(width);
    std::mt19937 random(1);
    forRows(header, [&](int first, int last) {
        for (int y = first; y <= last; ++y) {
            makeRow(width, y, rows.getRow(y - first), random);
        }
        output.write(rows.makeFrameBuffer(first), first, last);
    });
}

void setThreads(char const* threads)
{
    Imf::setGlobalThreadCount(std::atoi(threads) > 1 ? std::atoi(threads) : 0);
}

void copyFile(char** arguments)
{
    setThreads(arguments[2]);
    Input input(arguments[0]);
    Output output(arguments[1], input.getHeader());
    Rows rows(input.getWidth());
    forRows(input.getHeader(), [&](int first, int last) {
        Imf::FrameBuffer const frame = rows.makeFrameBuffer(first);
        input.read(frame, first, last);
        output.write(frame, first, last);
    });
}

/// Time that is none of the measured work.
class Aside {
public:
    void run(std::function<void()> const& work)
    {
        auto const start = std::chrono::steady_clock::now();
        double const busy = getProcessorSeconds();
        work();
        processorSeconds += getProcessorSeconds() - busy;
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

    void print() const { std::printf("%.6f %.6f\n", seconds, processorSeconds); }

private:
    static double getProcessorSeconds()
    {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        auto const toSeconds = [](timeval const& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
        };
        return toSeconds(usage.ru_utime) + toSeconds(usage.ru_stime);
    }

    double seconds = 0.0;
    double processorSeconds = 0.0;
};

void writeResult(char** arguments)
{
    setThreads(arguments[3]);
    Input input(arguments[0]);
    Aside aside;
    std::unique_ptr<Input> result;
    aside.run([&] { result = std::make_unique<Input>(arguments[1]); });
    Output output(arguments[2], result->getHeader());
    Rows rows(input.getWidth());
    forRows(input.getHeader(), [&](int first, int last) {
        Imf::FrameBuffer const frame = rows.makeFrameBuffer(first);
        input.read(frame, first, last);
        aside.run([&] { result->read(frame, first, last); });
        output.write(frame, first, last);
    });
    aside.run([&] { result.reset(); });
    aside.print();
}

struct Command {
    char const* name;
    int nbArguments;
    void (*run)(char** arguments);
};
constexpr Command commands[] = {
    {"make", 5, makeFile}, {"copy", 3, copyFile}, {"floor", 4, writeResult}};

} // namespace

int main(int nbArguments, char** arguments)
{
    try {
        for (Command const& command : commands) {
            if (nbArguments == command.nbArguments + 2 &&
                arguments[1] == std::string(command.name)) {
                command.run(arguments + 2);
                return 0;
            }
        }
    } catch (std::exception const& error) {
        std::fprintf(stderr, "exrFiles: %s\n", error.what());
        return 1;
    }
    std::fputs("exrFiles make FILE WIDTH HEIGHT COMPRESSION TILE | copy INPUT OUTPUT THREADS | "
               "floor INPUT RESULT OUTPUT THREADS\n",
               stderr);
    return 2;
}
