// A value's way from any thread through an event and a weak handler to its owner.

#include "callbacks/EvRequestSafeCb.h"

#include "base/EvEventManager.h"
#include "base/RCWeakPtr.h"
#include "callbacks/RCMethodCb.h"
#include "primitives/CoColor.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using Pixel = CoRgbaColorTyped<float>;

float lastRed = 0.0F;

struct Owner {
    void receive(Pixel const& value) { lastRed = value.red; }
};

using OwnerCb = RCMethodCb<Owner, RCWeakPtr, Pixel>;

struct EvRequestSafeCbTest : ::testing::Test {
    ~EvRequestSafeCbTest() noexcept override = default;
    void deliverFromWorker(RCWeakPtr<OwnerCb> const& handler)
    {
        lastRed = 0.0F;
        std::thread([handler] {
            EvEventManager::getInstance().post(
                makeOwned<EvRequestSafeCb<RCWeakPtr, Pixel>>(handler, Pixel{5.0F, 0, 0, 1}));
        }).join();
    }

    RCStrongPtr<Owner> owner = makeStrong<Owner>();
    RCStrongPtr<OwnerCb> callback = makeStrong<OwnerCb>(owner, &Owner::receive);
};

TEST_F(EvRequestSafeCbTest, ValueReachesTheOwnerWhenEventsAreProcessed)
{
    deliverFromWorker(callback);
    EXPECT_EQ(0.0F, lastRed);
    EXPECT_EQ(1, EvEventManager::getInstance().processEvents());
    EXPECT_EQ(5.0F, lastRed);
}

struct GoneCase {
    char const* name;
    void (*change)(EvRequestSafeCbTest&);
};

constexpr GoneCase goneCases[] = {
    {"handler gone", [](auto& test) { test.callback = nullptr; }},
    {"owner gone", [](auto& test) { test.owner = nullptr; }},
};

class GoneTest : public EvRequestSafeCbTest, public ::testing::WithParamInterface<GoneCase> {};

TEST_P(GoneTest, ValueIsDropped)
{
    SCOPED_TRACE(GetParam().name);
    deliverFromWorker(callback);
    GetParam().change(*this);
    EXPECT_EQ(1, EvEventManager::getInstance().processEvents());
    EXPECT_EQ(0.0F, lastRed);
}

INSTANTIATE_TEST_SUITE_P(AfterPosting, GoneTest, ::testing::ValuesIn(goneCases));

TEST_F(EvRequestSafeCbTest, WithoutMemberFunctionNothingHappens)
{
    auto const idle = makeStrong<OwnerCb>(owner, nullptr);
    Pixel pixel;
    EXPECT_NO_THROW(idle->call(pixel));
}

} // namespace
