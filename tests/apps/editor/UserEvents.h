#pragma once

#include "base/EvEventManager.h"

#include <chrono>
#include <gtest/gtest.h>

/// Runs on the user-interface thread what workers post, until something has come about.
inline void waitUntil(auto const& isReached)
{
    constexpr std::chrono::seconds longest{60}; // no measure of speed
    auto const end = std::chrono::steady_clock::now() + longest;
    while (!isReached()) {
        ASSERT_LT(std::chrono::steady_clock::now(), end);
        EvEventManager::getInstance().waitForEvents(std::chrono::milliseconds(100));
        EvEventManager::getInstance().processEvents();
    }
}
