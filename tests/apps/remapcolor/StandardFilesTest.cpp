// Pictures, projects and lists through standard input and output.

#include "apps/remapcolor/Program.h"

#include <array>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <thread>

namespace {

using Names = std::vector<std::string>;
using Prepare = std::function<void()>;

/// A folder with a picture "in.exr", a mask "mask.exr" and a project "look.json".
class StandardFilesTest : public testing::Test {
protected:
    StandardFilesTest()
    {
        writeExr(path("in.exr"), {.channels = {{"R"}, {"G"}, {"B"}, {"A"}, {"Z", Imf::FLOAT}}});
        writeExr(path("mask.exr"), {.channels = {}, .values = {{"A", 0.5F}}});
        EXPECT_EQ(run({"project", "-o", "look.json", "-s", "Linear.Gamma=2"}).status, 0);
    }
    std::filesystem::path path(std::string const& name) const { return folder.path / name; }
    ProgramResult run(
        Names const& words, Prepare const& prepare = [] {}) const
    {
        return Program(folder, words, {}, prepare).wait();
    }

    /// Standard input is that file.
    Prepare takeFile(std::string const& name) const
    {
        return [file = path(name)] { ::dup2(::open(file.c_str(), O_RDONLY), STDIN_FILENO); };
    }

    TestFolder folder;
};

/// A pipe as standard input, of which the test has the other end.
class InputPipe {
public:
    InputPipe() { EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0); }
    ~InputPipe() { std::for_each(ends.begin(), ends.end(), &::close); }
    Prepare connect() const
    {
        return [end = ends[0]] { ::dup2(end, STDIN_FILENO); };
    }
    void write(std::string const& bytes) const
    {
        EXPECT_EQ(::write(ends[1], bytes.data(), bytes.size()), std::ssize(bytes));
    }
    void waitUntilRead() const
    {
        for (int unread = 1; unread > 0;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            ASSERT_EQ(::ioctl(ends[0], FIONREAD, &unread), 0);
        }
    }

private:
    std::array<int, 2> ends{};
};

TEST_F(StandardFilesTest, PicturesAreWhatFilesAre)
{
    constexpr std::size_t dpxName = 36; // where a DPX file holds its own name
    std::string samples;
    for (int sample = 0; sample < 8 * 6 * 3; ++sample) {
        samples += static_cast<char>(sample * 37);
    }
    for (std::string const kind : {"exr", "png", "tiff", "jpeg", "dpx"}) {
        std::string const input = "in." + kind;
        if (kind != "exr") {
            writeOther(path(input), 8, 3, 8, samples);
        }
        std::string const depth = kind == "exr" ? "16" : "8";
        std::string const file = "out." + kind;
        ProgramResult const named = run({"render", input, "-o", file, "--depth", depth});
        ASSERT_EQ(named.status, 0) << testing::PrintToString(named.errors);
        ProgramResult const piped =
            run({"render", "-", "-o", "-", "--format", kind, "--depth", depth}, takeFile(input));
        EXPECT_EQ(piped.status, 0) << testing::PrintToString(piped.errors);
        std::string wanted = loadBytes(path(file));
        if (kind == "dpx") {
            wanted.replace(dpxName, file.size(), file.size(), '\0');
        }
        EXPECT_TRUE(piped.output == wanted) << kind;
    }
}

TEST_F(StandardFilesTest, EveryFileThatIsReadMayBeStandardInput)
{
    std::string const dash = "-";
    struct Case {
        std::string file;
        Names words; ///< with the file's name
    };
    saveBytes(path("list"), "1");
    for (auto const& [file, words] :
         {Case{"in.exr", {"pick", "in.exr", "3,4"}},
          Case{"in.exr", {"plot", "-o", "-", "--format", "png", "in.exr"}},
          Case{"mask.exr",
               {"render", "in.exr", "-o", "-", "--format", "exr", "--mask", "mask.exr"}},
          Case{"mask.exr", {"pick", "in.exr", "3,4", "--mask", "mask.exr"}},
          Case{"look.json", {"render", "in.exr", "-o", "-", "--format", "exr", "-p", "look.json"}},
          Case{"look.json", {"lut", "-o", "-", "--format", "cube", "-p", "look.json"}},
          Case{"look.json", {"plot", "-o", "-", "--format", "svg", "-p", "look.json"}},
          Case{"look.json", {"project", "-o", "-", "-p", "look.json"}},
          Case{"list", {"check", "in.#.exr", "--frames-from", "list"}},
          Case{"in.exr", {"info", "in.exr"}}, Case{"in.exr", {"check", "in.exr", "--values"}}}) {
        Names piped = words;
        std::replace(piped.begin(), piped.end(), file, dash);
        ProgramResult const wanted = run(words);
        ProgramResult got = run(piped, takeFile(file));
        std::string const& command = words.front();
        if (command == "info") {
            got.output.replace(0, 1, file);
        }
        EXPECT_EQ(got.status, wanted.status) << testing::PrintToString(got.errors);
        bool const namesInput = command == "plot" && file == "in.exr";
        EXPECT_TRUE(namesInput || got.output == wanted.output) << testing::PrintToString(words);
        EXPECT_FALSE(got.output.empty());
    }
}

TEST_F(StandardFilesTest, WhatCannotBeIsRefused)
{
    struct Case {
        std::string input; ///< a file's name; empty for nothing
        Names words;
        int status;
        std::string complaint;
    };
    std::string const picture = loadBytes(path("in.exr"));
    saveBytes(path("cut.exr"), picture.substr(0, picture.size() / 2));
    saveBytes(path("text"), "hello");
    Names const toFile = {"render", "-", "-o", "out.exr"};
    auto const with = [](Names words, Names const& more) {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };
    Names const toOutput = {"render", "in.exr", "-o", "-", "--format", "exr"};
    Names const before = folder.list();
    for (auto const& [input, words, status, complaint] :
         {Case{"", toFile, 1, "standard input: it is empty"},
          Case{"cut.exr", toFile, 1, "standard input: the file is incomplete"},
          Case{"text", toFile, 1, "standard input: the file is damaged or of a kind"},
          Case{".", toFile, 1, "standard input: it is a folder"},
          Case{"/dev/zero", toFile, 1, "goes on after 64 MiB"},
          Case{"/dev/zero", {"project", "-p", "-", "-o", "x.json"}, 2, "goes on after 64 MiB"},
          Case{"text", {"project", "-p", "-", "-o", "x.json"}, 2, "project from standard input"},
          Case{"", {"pick", "-", "1,1"}, 1, "standard input: it is empty"},
          Case{"in.exr", with(toFile, {"--mask", "-"}), 2, "not INPUT and --mask"},
          Case{"in.exr", with(toFile, {"-p", "-"}), 2, "not INPUT and --project"},
          Case{"in.exr", {"pick", "-", "1,1", "--mask", "-"}, 2, "not INPUT and --mask"},
          Case{"in.exr", {"plot", "-", "-o", "x.svg", "-p", "-"}, 2, "not INPUT and --project"},
          Case{"in.exr", {"check", "-", "--frames-from", "-"}, 2, "not INPUT and --frames-from"},
          Case{"text", {"lut", "-o", "x.clf", "-p", "-", "-p", "-"}, 2, "one file only"},
          Case{"in.exr", with(toFile, {"--format", "exr"}), 2, "--format is for standard output"},
          Case{"", {"render", "in.exr", "-o", "-"}, 2, "add --format exr, png"},
          Case{"", {"lut", "-o", "-"}, 2, "add --format clf, cube or spi1d"},
          Case{"", {"plot", "-o", "-"}, 2, "add --format svg or png"},
          Case{"", {"project", "-o", "-", "--openfx", "-"}, 2, "name the same file"},
          Case{"in.exr", {"render", "-", "-o", "x.#.exr"}, 2, "a sequence of files"},
          Case{"", {"render", "x.#.exr", "-o", "-", "--format", "exr"}, 2, "a sequence of files"},
          Case{"", with(toOutput, {"--mask", "m.#.exr"}), 2, "a sequence of files"},
          Case{"", with(toOutput, {"-f", "1"}), 2, "--frame NUMBER says the time"},
          Case{"", with(toOutput, {"--frames-from", "text"}), 2, "--frame NUMBER"},
          Case{"", with(toOutput, {"--chunk", "1/2"}), 2, "--chunk"},
          Case{"", with(toOutput, {"--existing", "error"}), 2, "--existing"},
          Case{"in.exr", with(toFile, {"--existing", "skip"}), 2, "--existing"},
          Case{"in.exr", with(toFile, {"--on-missing", "skip"}), 2, "--on-missing"},
          Case{"in.exr", with(toFile, {"--log", "-"}), 2, "--log takes a file"}}) {
        std::string const file = input.empty() ? "/dev/null" : input;
        ProgramResult const result = run(words, takeFile(file));
        EXPECT_EQ(result.status, status) << complaint;
        ASSERT_EQ(result.errors.size(), 1U) << complaint;
        expectLineWith(complaint, result.errors[0]);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(folder.list(), before);
    }
}

TEST_F(StandardFilesTest, PictureThatIsNotTakenWholeIsAFailure)
{
    Names const words = {"render", "in.exr", "-o", "-", "--format", "exr"};
    ProgramResult const full = Program(folder, words, "/dev/full").wait();
    EXPECT_EQ(full.status, 3);
    expectLineWith("no space left", full.errors.at(0));
    auto const isBroken = [] {
        std::array<int, 2> ends{};
        bool const isMade = ::pipe(ends.data()) == 0 && ::dup2(ends[1], STDOUT_FILENO) >= 0;
        ::close(isMade ? ends[0] : STDERR_FILENO);
    };
    auto const isClosed = [] { ::close(STDOUT_FILENO); };
    for (auto const& [prepare, complaint] :
         {std::pair<Prepare, std::string>{isBroken, "closed it before the end"},
          {isClosed, "it is closed"}}) {
        ProgramResult const result = run(words, prepare);
        EXPECT_EQ(result.status, 3);
        ASSERT_EQ(result.errors.size(), 1U);
        expectLineWith(complaint, result.errors[0]);
    }
    EXPECT_EQ(run({"lut", "-o", "-", "--format", "clf", "-q"}, isBroken).status, 0);
}

TEST_F(StandardFilesTest, SignalEndsTheWaitForInput)
{
    Names const before = folder.list();
    for (Names const& words :
         {Names{"render", "-", "-o", "out.exr"},
          Names{"render", "in.exr", "-o", "x.exr", "-p", "-"}, Names{"pick", "-", "1,1"},
          Names{"check", "-"}, Names{"info", "-"}, Names{"project", "-p", "-", "-o", "x.json"}}) {
        InputPipe const pipe;
        pipe.write("x");
        Program const program(folder, words, {}, pipe.connect());
        pipe.waitUntilRead();
        program.sendSignal(SIGTERM);
        ProgramResult const result = program.wait();
        EXPECT_EQ(result.status, 128 + SIGTERM) << testing::PrintToString(words);
        EXPECT_EQ(result.errors.size(), 1U);
        EXPECT_EQ(folder.list(), before);
    }
}

} // namespace
