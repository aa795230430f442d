#pragma once

#include "base/EvEventManager.h"
#include "support/MediaSupport.h"

#include <chrono>
#include <string>
#include <vector>

/// A folder with frames of a shot: shot.0001.exr and so on, small, each of one colour that tells
/// its number.
class ShotFixture : public MediaTest {
protected:
    /// 36 pixels of four halves, in rows of 64 bytes each.
    static constexpr std::size_t frameBytes = 320 * 52;

    void write(std::string const& name, int number, int width = 36)
    {
        float const value = static_cast<float>(number) / 64.0F;
        ExrRecipe recipe;
        recipe.channels = {};
        recipe.values = {{"R", value}, {"G", value}, {"B", value}, {"A", 1.0F}};
        recipe.dataWindow = recipe.displayWindow = {{0, 0}, {width - 1, 51}};
        writeExr(file(name), recipe);
    }
    void writeShot(std::vector<int> const& frames)
    {
        for (int const frame : frames) {
            write(nameOf(frame), frame);
        }
    }
    static std::string nameOf(int frame)
    {
        std::string const digits = std::to_string(frame);
        return "shot." + std::string(4 - digits.size(), '0') + digits + ".exr";
    }
    void tear(int frame)
    {
        std::filesystem::path const torn = file(nameOf(frame));
        std::filesystem::resize_file(torn, std::filesystem::file_size(torn) / 2);
    }

    /// Runs what workers post meanwhile.
    static void waitUntil(auto const& isReached)
    {
        constexpr std::chrono::seconds longest{60}; // no measure of speed
        auto const end = std::chrono::steady_clock::now() + longest;
        while (!isReached()) {
            ASSERT_LT(std::chrono::steady_clock::now(), end);
            EvEventManager::getInstance().waitForEvents(std::chrono::milliseconds(20));
            EvEventManager::getInstance().processEvents();
        }
    }
};
