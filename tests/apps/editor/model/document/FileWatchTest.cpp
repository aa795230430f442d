#include "editor/model/document/FileWatch.h"

#include "support/TestFolder.h"

#include <gtest/gtest.h>

TEST(FileWatchTest, WhateverHappensToAFileIsToldAndNothingOfOthers)
{
    namespace fs = std::filesystem;
    TestFolder const folder;
    TestFolder const elsewhere;
    fs::path const file = folder.path / "a.exr";
    fs::path const other = folder.path / "b.exr";
    fs::path const real = elsewhere.path / "real.exr";
    fs::path const link = folder.path / "link.exr";
    saveBytes(file, "1");
    saveBytes(real, "1");
    fs::create_symlink(real, link);
    FileWatch watch;
    watch.watch({other});
    watch.watch({file, link});
    EXPECT_TRUE(watch.read().empty());
    using Files = std::set<fs::path>;
    saveBytes(other, "1");
    EXPECT_EQ(watch.read(), Files{});
    saveBytes(file, "2");
    EXPECT_EQ(watch.read(), Files{file}) << "written";
    fs::rename(other, file);
    EXPECT_EQ(watch.read(), Files{file}) << "replaced";
    fs::remove(file);
    EXPECT_EQ(watch.read(), Files{file}) << "removed";
    saveBytes(file, "3");
    EXPECT_EQ(watch.read(), Files{file}) << "made again";
    saveBytes(real, "2");
    EXPECT_EQ(watch.read(), Files{link}) << "where a link leads";
    watch.watch({});
    saveBytes(file, "4");
    EXPECT_TRUE(watch.read().empty());
}
