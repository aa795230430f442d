#include "editor/model/document/Recovery.h"

#include "base/EvEventManager.h"
#include "support/TestFolder.h"

#include <chrono>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class RecoveryTest : public testing::Test {
protected:
    ~RecoveryTest() override { EvEventManager::getInstance().discardEvents(); }

    /// Keeps work in a process that is killed when it has.
    void keepAndDie(UnsavedWork const& work)
    {
        pid_t const child = ::fork();
        if (child == 0) {
            { // its end waits for what is to be written
                Recovery recovery(place, [](std::string const&) {});
                recovery.keep({"earlier", {}, {}, {}, {}});
                recovery.keep(work);
            }
            ::kill(::getpid(), SIGKILL);
        }
        ::waitpid(child, nullptr, 0);
    }

    TestFolder folder;
    fs::path const place = folder.path / "state" / "recovery";
    std::vector<std::string> failures;
    std::unique_ptr<Recovery> recovery; ///< once no process is to be forked any more

    std::unique_ptr<Recovery> makeRecovery()
    {
        return std::make_unique<Recovery>(
            place, [this](std::string const& failure) { failures.push_back(failure); });
    }
};

UnsavedWork const work{"{\"a\": \"ü\"}", "/projects/a b%\xff.json", "old", "/plates/ü.exr",
                       "2026-11-24 12:00:00"};

} // namespace

TEST_F(RecoveryTest, WorkOfAKilledProgramIsOfferedOnceUntilItIsRemoved)
{
    keepAndDie(work);
    keepAndDie({"later", {}, {}, {}, "2026-11-25 12:00:00"});
    recovery = makeRecovery();
    std::vector<LeftWork> left = recovery->claim();
    ASSERT_EQ(left.size(), 2U);
    EXPECT_EQ(left[0].work->project, "later");
    EXPECT_EQ(left[1].work, work);
    EXPECT_TRUE(makeRecovery()->claim().empty()) << "another start meanwhile";
    left.clear();
    left = recovery->claim();
    ASSERT_EQ(left.size(), 2U) << "what was not decided on stays";
    recovery->remove(std::move(left[0]));
    left.erase(left.begin());
    recovery.reset();
    left.clear();
    left = makeRecovery()->claim();
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(left[0].work, work);
}

TEST_F(RecoveryTest, NothingIsLeftOfProgramsThatEndInOrderOrStillRun)
{
    recovery = makeRecovery();
    recovery->keep(work);
    auto other = makeRecovery();
    other->keep(work);
    EXPECT_TRUE(makeRecovery()->claim().empty());
    other->drop();
    other.reset();
    recovery->drop();
    recovery.reset();
    EXPECT_TRUE(fs::is_empty(place));
}

TEST_F(RecoveryTest, WhatAKilledProgramWasWritingGoesAfterADay)
{
    fs::create_directories(place);
    std::string const tail = ".0123456789abcdef.tmp.json";
    for (auto const& [name, hours] : {std::pair(".old", 25), std::pair(".young", 23)}) {
        fs::path const file = place / (name + tail);
        saveBytes(file, "{");
        fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(hours));
    }
    recovery = makeRecovery();
    recovery->keep(work);
    recovery.reset();
    EXPECT_FALSE(fs::exists(place / (".old" + tail)));
    EXPECT_TRUE(fs::exists(place / (".young" + tail)));
}

TEST_F(RecoveryTest, DamagedFilesAreSaidToBe)
{
    keepAndDie(work);
    recovery = makeRecovery();
    fs::path file;
    for (auto const& entry : fs::directory_iterator(place)) {
        file = entry.path().extension() == ".json" ? entry.path() : file;
    }
    std::string const whole = loadBytes(file);
    std::string wrongEscape = whole;
    wrongEscape.replace(whole.find("%20"), 3, "%zz");
    for (std::string const& bytes :
         {std::string(), whole.substr(0, whole.size() / 2), std::string(100, '\xff'),
          std::string("[]"), std::string("{\"format\": \"remap-color-recovery\"}"), wrongEscape}) {
        saveBytes(file, bytes);
        auto const left = recovery->claim();
        ASSERT_EQ(left.size(), 1U);
        EXPECT_FALSE(left[0].work.has_value()) << bytes;
    }
}

TEST_F(RecoveryTest, FailureIsToldOnceAndItsEndToo)
{
    auto const settle = [this](std::size_t nbFailures) {
        EvEventManager& events = EvEventManager::getInstance();
        while (failures.size() < nbFailures && events.waitForEvents(std::chrono::seconds(30))) {
            events.processEvents();
        }
    };
    recovery = makeRecovery();
    saveBytes(folder.path / "state", ""); // where the folder should be
    recovery->keep(work);
    settle(1);
    recovery->keep(work);
    fs::remove(folder.path / "state");
    recovery->keep(work);
    settle(2);
    ASSERT_EQ(failures.size(), 2U);
    EXPECT_NE(failures[0].find("recovery\" cannot be made"), std::string::npos) << failures[0];
    EXPECT_TRUE(failures[1].empty());
}
