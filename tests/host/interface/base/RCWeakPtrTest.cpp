// Owning, strong and weak handles: who destroys the object, and when.

#include "base/RCWeakPtr.h"

#include "base/HostException.h"
#include "base/OPtr.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

int nbAlive = 0;

struct Base {
    Base() { ++nbAlive; }
    Base(Base const&) = delete;
    virtual ~Base() noexcept(false) { --nbAlive; }
    int number = 7;
};
struct Padding {
    virtual ~Padding() noexcept(false) = default;
    double padding = 0.0;
};
struct Derived : Padding, Base {}; // its Base does not stand at its beginning
struct Other : Base {};
struct ThrowsWhenDestroyed : Base {
    ~ThrowsWhenDestroyed() noexcept(false) override { throw std::runtime_error("destroyed"); }
};

static_assert(!std::is_copy_constructible_v<OPtr<Base>>);
static_assert(!std::is_convertible_v<Base*, OPtr<Base>>);
static_assert(!std::is_constructible_v<OPtr<Derived>, OPtr<Base>>);

TEST(OPtrTest, WhatADestructorThrowsArrivesAtTheLastHandle)
{
    OPtr<Base> owner = makeOwned<ThrowsWhenDestroyed>();
    EXPECT_THROW(owner = nullptr, std::runtime_error);
    RCStrongPtr<Base> strong = makeStrong<ThrowsWhenDestroyed>();
    RCWeakPtr<Base> const weak = strong;
    EXPECT_THROW(strong = nullptr, std::runtime_error);
    EXPECT_TRUE(weak.isExpired());
    EXPECT_EQ(0, nbAlive);
}

TEST(RCWeakPtrTest, ViewsOfAnObjectShareItsLife)
{
    auto derived = makeStrong<Derived>();
    RCWeakPtr<Derived> const weakDerived = derived;
    RCWeakPtr<Base const> const weakBase = weakDerived;
    RCStrongPtr<Base> base = derived;
    derived = nullptr;
    EXPECT_EQ(base.get(), weakBase.lock().get());
    EXPECT_EQ(7, weakBase.lock()->number);
    derived = castStrong<Derived>(base);
    base = nullptr;
    EXPECT_EQ(1, nbAlive);
    EXPECT_EQ(weakDerived.lock(), derived);
    derived = nullptr;
    EXPECT_EQ(0, nbAlive);
    EXPECT_TRUE(weakBase.isExpired());
    EXPECT_TRUE(weakBase.lock().isNull());
    base = makeStrong<Other>();
    EXPECT_THROW(castStrong<Derived>(base), CastFailedException);
    EXPECT_TRUE(castStrong<Derived>(RCStrongPtr<Base>()).isNull());
}

TEST(RCWeakPtrTest, WeakHandlesRaceWithTheLastStrongOne)
{
    constexpr int nbRounds = 2000;
    for (int round = 0; round < nbRounds; ++round) {
        auto strong = makeStrong<Other>();
        std::thread observer([weak = RCWeakPtr<Base>(strong)] {
            while (auto const locked = weak.lock()) {
                EXPECT_EQ(7, locked->number);
            }
        });
        strong = nullptr;
        observer.join();
        ASSERT_EQ(0, nbAlive);
    }
}

} // namespace
