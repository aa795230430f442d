// What goes wrong ends in one clear line and leaves nothing behind.

#include "MediaSupport.h"

#include <ImfChannelList.h>
#include <ImfMultiPartOutputFile.h>

#include <csignal>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using FailuresTest = MediaTest;

void open(std::filesystem::path const& file)
{
    openImage(file, {}, [](std::string const&) {});
}

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
    struct Row {
        char const* reason;
        std::function<void(std::filesystem::path const&)> write;
    };
    Row const rows[] = {
        {"2 parts",
         [](auto const& path) {
             Imf::Header headers[2] = {Imf::Header(4, 4), Imf::Header(4, 4)};
             for (int part = 0; part < 2; ++part) {
                 headers[part].setName(std::to_string(part));
                 headers[part].setType("scanlineimage");
                 headers[part].channels().insert("R", Imf::Channel(Imf::HALF));
             }
             Imf::MultiPartOutputFile(path.c_str(), headers, 2);
         }},
        {"deep data",
         [](auto const& path) {
             writeExr(path, {});
             std::string bytes = loadBytes(path);
             bytes[5] = 0x08; // the version's flag for it
             saveBytes(path, bytes);
         }},
        {"incomplete", [](auto const& path) { writeExr(path, {.isComplete = false}); }},
        {"whole numbers",
         [](auto const& path) {
             writeExr(path, {.channels = {{"R", Imf::UINT}}});
         }},
        {"sub-sampled",
         [](auto const& path) {
             writeExr(path, {.channels = {{"R", Imf::HALF, 2, 2}}, .dataWindow = {{0, 0}, {7, 7}}});
         }},
        {"does not begin as", [](auto const& path) { saveBytes(path, "a text"); }},
        {"too short for them",
         [](auto const& path) {
             writeExr(path, {});
             std::string bytes = loadBytes(path);
             std::size_t const window = bytes.find("dataWindow") + 11 + 6 + 4;
             bytes[window + 14] = 0x10; // the last row becomes one of a million
             saveBytes(path, bytes);
         }},
    };
    for (Row const& row : rows) {
        row.write(file("in.exr"));
        std::string const text = errorOf([&] { open(file("in.exr")); }, ImageFailure::File);
        EXPECT_NE(text.find(row.reason), std::string::npos) << text;
        EXPECT_EQ(text.find("in.exr"), text.rfind("in.exr")) << text;
    }
}

TEST_F(FailuresTest, AnnouncedSizeIsLimited)
{
    writeExr(file("in.exr"), {});
    errorOf([&] { openImage(file("in.exr"), {.mostBytes = 1000}, {}); }, ImageFailure::File);
}

TEST_F(FailuresTest, TruncatedFilesEndInErrors)
{
    writeExr(file("a.exr"), {});
    writeExr(file("b.exr"), {.tileSize = 16});
    writePng(file("c.png"), 9, 9, PngColour::Rgb, 8, std::string(9 * 9 * 3, 'x'));
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
    EXPECT_EQ(listFolder().size(), 3U);
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

TEST_F(FailuresTest, ImpossibleOutputsAreRefusedBeforehand)
{
    std::filesystem::create_directory(file("folder.exr"));
    struct Row {
        char const* name;
        IxPixelFormat::Depth depth;
        char const* reason;
    };
    for (Row const& row : {Row{"a.exr", IxPixelFormat::UINT8, "no 8-bit channels"},
                           Row{"a.xyz", IxPixelFormat::FLOAT16, "\".xyz\" is not known"},
                           Row{"a", IxPixelFormat::FLOAT16, "no extension"},
                           Row{"no/a.exr", IxPixelFormat::FLOAT16, "does not exist"},
                           Row{"folder.exr", IxPixelFormat::FLOAT16, "other than a file"}}) {
        std::string const text =
            errorOf([&] { checkOutput(file(row.name), row.depth); }, ImageFailure::Request);
        EXPECT_NE(text.find(row.reason), std::string::npos) << text;
    }
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
        EXPECT_EQ(listFolder().size(), 1U) << name;
    }
}

TEST_F(FailuresTest, UnfinishedOutputLeavesNothing)
{
    writeExr(file("in.exr"), {});
    auto const source = openImage(file("in.exr"), {}, {});
    for (char const* const name : {"out.exr", "out.png"}) {
        auto sink = createImage(file(name), *source, source->getInfo().format, true,
                                [](std::string const&) {});
        EXPECT_EQ(listFolder().size(), 2U);
        sink.reset();
        EXPECT_EQ(listFolder().size(), 1U);
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
