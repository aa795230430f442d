// What goes wrong ends in one clear line and leaves nothing behind.

#include "support/MediaSupport.h"

#include <ImfChannelList.h>
#include <ImfMultiPartOutputFile.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

namespace {

using FailuresTest = MediaTest;

void open(std::filesystem::path const& file)
{
    openImage(file, {});
}

/// Little-endian numbers within a file's bytes.
std::uint64_t numberAt(std::string const& bytes, std::size_t place)
{
    std::uint64_t number = 0;
    std::memcpy(&number, &bytes.at(place), sizeof number);
    return number;
}
void putNumber(std::string& bytes, std::size_t place, std::uint32_t number)
{
    std::memcpy(&bytes.at(place), &number, sizeof number);
}

/// The table of chunks: its first entry leads to just behind it.
std::size_t findTable(std::string const& exr)
{
    constexpr std::size_t mostBytes = 300 * 8;
    for (std::size_t place = exr.find("screenWindowWidth"); place + 8 < exr.size(); ++place) {
        std::uint64_t const first = numberAt(exr, place);
        if (first > place && first <= place + mostBytes && (first - place) % 8 == 0) {
            return place;
        }
    }
    ADD_FAILURE() << "no table";
    return 0;
}

/// A change that makes a sound EXR file announce more than it holds.
struct Lie {
    char const* name;
    std::function<void(std::string& exr)> tell;
};
void widen(std::string& exr, std::uint32_t xMax)
{
    putNumber(exr, exr.find("dataWindow") + 11 + 6 + 4 + 8, xMax);
}
Lie const lies[] = {
    {"a little wider", [](std::string& exr) { widen(exr, 44); }},
    {"twice as wide", [](std::string& exr) { widen(exr, 2 * 37 - 1); }},
    {"very wide", [](std::string& exr) { widen(exr, 1'000'000); }},
    {"an empty block",
     [](std::string& exr) {
         bool const isTiled = exr.find("tiledesc") != std::string::npos;
         putNumber(exr, numberAt(exr, findTable(exr)) + (isTiled ? 16 : 4), 0);
     }},
    {"one block for two",
     [](std::string& exr) {
         std::size_t const table = findTable(exr);
         exr.replace(table + 8, 8, exr, table, 8);
     }},
    {"a block in the header", [](std::string& exr) { putNumber(exr, findTable(exr) + 8, 100); }},
    {"a block that is missing", [](std::string& exr) { exr.resize(exr.size() - 1); }},
};

/// Lets files grow to `bytes` only: what a full disk looks like to a writer.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : formerHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &former);
        rlimit limited = former;
        limited.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &former);
        std::signal(SIGXFSZ, formerHandler);
    }
    FileSizeLimit(FileSizeLimit const&) = delete;
    FileSizeLimit& operator=(FileSizeLimit const&) = delete;

private:
    rlimit former{};
    void (*formerHandler)(int);
};

} // namespace

TEST_F(FailuresTest, UnsupportedExrFilesSayWhy)
{
    auto const in = file("in.exr");
    auto const expectReason = [&](std::string const& reason) {
        std::string const text = errorOf([&] { open(in); }, ImageFailure::File);
        expectLineWith(reason, text);
        EXPECT_EQ(text.find("in.exr"), text.rfind("in.exr")) << text;
    };
    writeExr(in, {.isComplete = false});
    expectReason("incomplete");
    writeExr(in, {.channels = {{"R", Imf::UINT}}});
    expectReason("whole numbers");
    writeExr(in, {.channels = {{"R", Imf::HALF, 2, 2}}, .dataWindow = {{0, 0}, {7, 7}}});
    expectReason("sub-sampled");
    saveBytes(in, "a text");
    expectReason("does not begin as");
    writeExr(in, {});
    errorOf([&] { openImage(in, {.mostBytes = 1000}); }, ImageFailure::File);
    std::string const plain = loadBytes(in);
    std::string bytes = plain;
    bytes[bytes.find("dataWindow") + 11 + 6 + 4 + 14] = 0x10; // the last row is one of a million
    saveBytes(in, bytes);
    expectReason("too short for them");
    bytes = plain;
    bytes[5] = 0x08; // the version's flag for it
    saveBytes(in, bytes);
    expectReason("deep data");
}

TEST_F(FailuresTest, TruncatedFilesEndInErrors)
{
    writeExr(file("a.exr"), {});
    writeExr(file("b.exr"), {.tileSize = 16});
    writeOther(file("c.png"), 9, 3, 8, std::string(9 * 9 * 3, 'x'));
    for (char const* const name : {"a.exr", "b.exr", "c.png"}) {
        std::string const whole = loadBytes(file(name));
        std::filesystem::path const cut = file(std::string("cut") + name);
        // The last 16 bytes of a PNG file are no pixels.
        for (std::size_t size = 0; size + 16 < whole.size(); size += 1 + whole.size() / 101) {
            saveBytes(cut, whole.substr(0, size));
            errorOf([&] { copyImage(cut, file(std::string("out") + name)); }, ImageFailure::File);
        }
        std::filesystem::remove(cut);
    }
    EXPECT_EQ(folder.list().size(), 3U);
}

TEST_F(FailuresTest, WhatAnExrFileAnnouncesIsHeldAgainstWhatItHolds)
{
    std::map<std::string, float> const flat = {{"R", 0.5F}, {"G", 0.25F}, {"B", 0.F}};
    for (int compression = 0; compression < Imf::NUM_COMPRESSION_METHODS; ++compression) {
        for (int const tileSize : {0, 16}) {
            for (auto const& values : {flat, {}}) {
                if (tileSize != 0 && values.empty()) {
                    continue; // noise is stored as it is, alike in rows and tiles
                }
                writeExr(file("in.exr"), {.compression = static_cast<Imf::Compression>(compression),
                                          .tileSize = tileSize,
                                          .dataWindow = {{0, 0}, {36, 269}},
                                          .values = values});
                std::string const honest = loadBytes(file("in.exr"));
                copyImage(file("in.exr"), file("out.exr"));
                std::filesystem::remove(file("out.exr"));
                for (Lie const& lie : lies) {
                    SCOPED_TRACE(std::to_string(compression) + " " + std::to_string(tileSize) +
                                 (values.empty() ? " noise: " : " flat: ") + lie.name);
                    std::string bytes = honest;
                    lie.tell(bytes);
                    saveBytes(file("in.exr"), bytes);
                    errorOf([&] { copyImage(file("in.exr"), file("out.exr")); },
                            ImageFailure::File);
                    EXPECT_EQ(folder.list().size(), 1U);
                }
            }
        }
    }
}

TEST_F(FailuresTest, AttributesAreAsLongAsTheirType)
{
    using namespace std::string_literals;
    std::vector<std::pair<std::string, std::string>> cases = {
        {"chlist", "A\0"s + std::string(16, '\0')}, // no end
        {"chlist", "\0 "s},
        {"floatvector", "12345"},
        {"preview", "\1\0\0\0\1\0\0\0123"s},
        {"preview", std::string(8, '\xff')},
        {"stringvector", "\xff\xff\xff\x7f"s},
        {"stringvector", "\1\0\0\0ab"s},
    };
    for (char const* const type : {"box2f",
                                   "box2i",
                                   "chromaticities",
                                   "compression",
                                   "deepImageState",
                                   "double",
                                   "envmap",
                                   "float",
                                   "int",
                                   "keycode",
                                   "lineOrder",
                                   "m33d",
                                   "m33f",
                                   "m44d",
                                   "m44f",
                                   "rational",
                                   "tiledesc",
                                   "timecode",
                                   "v2d",
                                   "v2f",
                                   "v2i",
                                   "v3d",
                                   "v3f",
                                   "v3i"}) {
        cases.emplace_back(type, "123");
    }
    writeExr(file("in.exr"), {});
    std::string const honest = loadBytes(file("in.exr"));
    for (auto const& [type, value] : cases) {
        SCOPED_TRACE(type);
        std::string attribute = "one\0"s + type + std::string(5, '\0');
        putNumber(attribute, attribute.size() - 4, static_cast<std::uint32_t>(value.size()));
        saveBytes(file("in.exr"), std::string(honest).insert(8, attribute + value));
        expectLineWith("as long as", errorOf([&] { open(file("in.exr")); }, ImageFailure::File));
    }
}

TEST_F(FailuresTest, WhatOtherFilesAnnounceIsHeldAgainstTheirLength)
{
    using namespace std::string_literals;
    struct Case {
        char const* name;
        std::size_t place;
        std::string width; ///< 2^24 as the file writes it; empty: the file is cut instead
    };
    for (auto const& [name, place, width] :
         {Case{"a.png", 16, "\1\0\0\0"s}, Case{"a.dpx", 772, "\0\0\0\1"s}, Case{"cut.dpx", 0, ""},
          Case{"a.tif", 12, "\4\0\1\0\0\0\0\0\0\1"s}}) {
        SCOPED_TRACE(name);
        writeOther(file(name), 40, 3, 8, std::string(std::size_t{40} * 40 * 3, 'x'));
        std::string bytes = loadBytes(file(name));
        bytes.replace(place, width.size(), width);
        saveBytes(file(name), bytes.substr(0, bytes.size() - (width.empty() ? 100 : 0)));
        expectLineWith("too short for them",
                       errorOf([&] { open(file(name)); }, ImageFailure::File));
    }
}

TEST_F(FailuresTest, BlocksOfTiffThatEndBeforeTheirRowsAreRefused)
{
    for (char const* const isBig : {"0", "1"}) {
        writeOther(file("a.tif"), 40, 3, 8, std::string(std::size_t{40} * 40 * 3, 'x'),
                   {{"compression", "zip"}, {"tiff:bigtiff", isBig}});
        std::string bytes = loadBytes(file("a.tif"));
        std::size_t const width = bytes.find(std::string("\0\1\3\0\1\0\0\0", 8)); // its tag
        bytes.at(width + (*isBig == '1' ? 12 : 8)) = 44;
        saveBytes(file("a.tif"), bytes);
        expectLineWith("incomplete", errorOf([&] { open(file("a.tif")); }, ImageFailure::File));
    }
}

TEST_F(FailuresTest, DamagedHeadersEndInErrorsOrPictures)
{
    writeExr(file("in.exr"), {.tileSize = 16});
    std::string const whole = loadBytes(file("in.exr"));
    std::mt19937 random(5);
    for (int round = 0; round < 600; ++round) {
        std::string bytes = whole;
        for (int change = 0; change < 2; ++change) {
            bytes[random() % 420] = static_cast<char>(random());
        }
        saveBytes(file("bad.exr"), bytes);
        try {
            copyImage(file("bad.exr"), file("out.exr"));
        } catch (ImageFileError const& error) {
            EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        }
    }
}

TEST_F(FailuresTest, DamagedFilesOnSeveralThreadsHaveTheirOwnMessages)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer does not see the image library's own locks";
#endif
    auto const findFault = [this](std::string const& name) {
        return messageOf<ImageFileError>([&] { copyImage(file(name), file("out" + name)); });
    };
    std::map<std::string, std::string> faults;
    std::mt19937 random(5);
    std::string samples(std::size_t{60} * 60 * 3, ' ');
    std::generate(samples.begin(), samples.end(), [&] { return static_cast<char>(random()); });
    for (char const* const name : {"a.png", "b.png", "c.jpg", "d.tif", "e.tif", "f.dpx"}) {
        writeOther(file(name), 60, 3, 8, samples, {{"compression", "lzw"}});
        std::string bytes = loadBytes(file(name));
        std::size_t const place = name[0] == 'f' ? 780 : bytes.size() / 2;
        bytes.replace(place, 40, std::string(40, name[0] == 'b' ? '\0' : '\xff'));
        saveBytes(file(name), bytes);
        faults[name] = findFault(name);
        expectLineWith(name, faults[name]);
    }
    std::atomic<int> nbMixedUp = 0;
    std::vector<std::thread> threads;
    for (auto const& [name, fault] : faults) {
        threads.emplace_back([&findFault, &nbMixedUp, &name = name, &fault = fault] {
            for (int round = 0; round < 20; ++round) {
                nbMixedUp += findFault(name) != fault ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(nbMixedUp, 0);
}

TEST_F(FailuresTest, FullDiskIsNoticedAndLeavesTheFormerFile)
{
    writeExr(file("in.exr"), {});
    for (char const* const name : {"out.exr", "out.png", "out.tif", "out.jpg", "out.dpx"}) {
        copyImage(file("in.exr"), file(name));
        std::uintmax_t const size = std::filesystem::file_size(file(name));
        // The last byte fails when what is buffered is written out at the end.
        for (std::uintmax_t const limit : {std::uintmax_t{100}, size / 2, size - 1}) {
            saveBytes(file(name), "former");
            {
                FileSizeLimit const disk(limit);
                errorOf([&] { copyImage(file("in.exr"), file(name)); }, ImageFailure::Surroundings);
            }
            EXPECT_TRUE(loadBytes(file(name)) == "former") << name << " " << limit;
        }
        std::filesystem::remove(file(name));
        EXPECT_EQ(folder.list().size(), 1U) << name;
    }
}

TEST_F(FailuresTest, OutputHasOrdinaryPermissionsAndFollowsLinks)
{
    writeExr(file("in.exr"), {});
    writeExr(file("real.exr"), {});
    std::filesystem::create_symlink("real.exr", file("link.exr"));
    mode_t const former = ::umask(027);
    copyImage(file("in.exr"), file("link.exr"));
    ::umask(former);
    EXPECT_TRUE(std::filesystem::is_symlink(file("link.exr")));
    auto const permissions = std::filesystem::status(file("real.exr")).permissions();
    EXPECT_EQ(static_cast<unsigned>(permissions), 0640U);
}
