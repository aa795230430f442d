// Files that appear under their name only when they are complete.

#include "files/TemporaryFile.h"
#include "support/TestFolder.h"

#include <chrono>
#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

void write(TemporaryFile& temporary, std::string const& text)
{
    std::FILE* const stream = temporary.takeStream();
    std::fputs(text.c_str(), stream);
    std::fclose(stream);
}

TEST(TemporaryFile, TheLastOfSeveralForOneNameStaysWhole)
{
    TestFolder const folder;
    TemporaryFile first(folder.path / "a.exr");
    TemporaryFile second(folder.path / "a.exr");
    EXPECT_NE(first.getPath(), second.getPath());
    write(second, "second");
    write(first, "the first");
    second.publish();
    first.publish();
    EXPECT_EQ(folder.list(), Names{"a.exr"});
    EXPECT_EQ(loadBytes(folder.path / "a.exr"), "the first");
}

TEST(TemporaryFile, LongNamesAreCutBetweenLetters)
{
    TestFolder const folder;
    std::string letters;
    while (letters.size() < 250) {
        letters += "\u00e9";
    }
    for (std::string const& name : {letters + ".exr", "x" + letters + ".exr", letters + "letter"}) {
        TemporaryFile temporary(folder.path / name.substr(0, 255));
        std::string const made = temporary.getPath().filename().string();
        auto const cut = made.find(".", 1);
        EXPECT_EQ(made.substr(0, cut).substr(made[1] == 'x' ? 2 : 1).size() % 2, 0U) << made;
        write(temporary, "text");
        temporary.publish();
    }
    EXPECT_EQ(folder.list().size(), 3U);
}

TEST(TemporaryFile, WhatAKilledProcessLeftIsRemovedAfterADay)
{
    TestFolder const folder;
    Names const kept = {".a.0123456789abcdef.exr", ".a.0123456789abcdeg.tmp.exr",
                        ".a.0123456789abcdef.tmpexr", "a.0123456789abcdef.tmp.exr",
                        ".a.123.tmp.exr"};
    auto const age = [&](std::string const& name, std::chrono::hours hours) {
        saveBytes(folder.path / name, "");
        std::filesystem::last_write_time(folder.path / name,
                                         std::filesystem::file_time_type::clock::now() - hours);
    };
    for (std::string const& name : kept) {
        age(name, std::chrono::hours(1000));
    }
    age(".b.0123456789abcdef.tmp.exr", std::chrono::hours(23));
    age(".c.0123456789abcdef.tmp.exr", std::chrono::hours(25));
    age(".d.0123456789abcdef.tmp", std::chrono::hours(25));
    std::filesystem::create_directory(folder.path / ".e.0123456789abcdef.tmp");
    std::filesystem::create_symlink("x", folder.path / ".f.0123456789abcdef.tmp");
    {
        TemporaryFile const temporary(folder.path / "any.json");
    }
    Names const left = folder.list();
    EXPECT_EQ(left.size(), kept.size() + 3);
    for (char const* const gone : {".c.0123456789abcdef.tmp.exr", ".d.0123456789abcdef.tmp"}) {
        EXPECT_EQ(std::count(left.begin(), left.end(), gone), 0) << gone;
    }
}

} // namespace
