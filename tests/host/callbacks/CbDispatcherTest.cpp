// Subscriptions: order, changes during a call, and the death of either side.

#include "callbacks/CbDispatcher.h"

#include "base/EvEventManager.h"
#include "primitives/CoColor.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace {

using Pixel = CoRgbaColorTyped<float>;
using PixelDispatcher = CbDispatcher<Pixel>;

/// Writes its name into `log` when called, then does what the test wants done.
class Recorder : public CbHandler<Pixel> {
public:
    explicit Recorder(std::string recorderName, std::string& sharedLog)
        : name(std::move(recorderName)), log(sharedLog)
    {
    }
    using CbHandler<Pixel>::call;
    void call(Pixel& value) override
    {
        log += name;
        CbHandler<Pixel>::call(value); // the base's body does nothing and may be called
        if (onCall) {
            onCall(value);
        }
    }

    std::function<void(Pixel&)> onCall;

private:
    std::string name;
    std::string& log;
};

struct CbDispatcherTest : ::testing::Test {
    std::string called()
    {
        log.clear();
        dispatcher.call(pixel);
        return log;
    }

    std::string log;
    Pixel pixel;
    PixelDispatcher dispatcher;
    Recorder first{"A", log};
    Recorder second{"B", log};
    Recorder third{"h", log};
};

struct OrderCase {
    char const* name;
    void (*change)(PixelDispatcher&, Recorder& first, Recorder& third);
    char const* expectedCalls; // A and B are subscribed before the change
    int expectedSubscriptionsOfThird;
};

constexpr OrderCase orderCases[] = {
    {"add", [](auto& d, auto&, auto& h) { d.addHandler(&h); }, "ABh", 1},
    {"prepend", [](auto& d, auto&, auto& h) { d.prependHandler(&h); }, "hAB", 1},
    {"insert", [](auto& d, auto&, auto& h) { d.insertHandler(&h); }, "AhB", 1},
    {"add twice", [](auto& d, auto& a, auto&) { d.addHandler(&a); }, "AB", 0},
    {"prepend after add",
     [](auto& d, auto&, auto& h) {
         d.addHandler(&h);
         d.prependHandler(&h);
         d.insertHandler(&h);
     },
     "ABh", 1},
    {"remove", [](auto& d, auto& a, auto&) { d.removeHandler(&a); }, "B", 0},
    {"remove a stranger", [](auto& d, auto&, auto& h) { d.removeHandler(&h); }, "AB", 0},
    {"reset of a handler",
     [](auto& d, auto& a, auto& h) {
         d.addHandler(&h);
         a.reset();
     },
     "Bh", 1},
    {"insert on empty",
     [](auto& d, auto&, auto& h) {
         d.removeAllHandlers();
         d.insertHandler(&h);
     },
     "", 0},
    {"null handlers",
     [](auto& d, auto&, auto&) {
         d.addHandler(nullptr);
         d.prependHandler(nullptr);
         d.insertHandler(nullptr);
         d.removeHandler(nullptr);
     },
     "AB", 0},
};

TEST_F(CbDispatcherTest, CallsHandlersInTheOrderOfTheirSubscription)
{
    for (auto const& row : orderCases) {
        SCOPED_TRACE(row.name);
        dispatcher.removeAllHandlers();
        dispatcher.addHandler(&first);
        dispatcher.addHandler(&second);
        row.change(dispatcher, first, third);

        std::string const expected = row.expectedCalls;
        EXPECT_EQ(expected, called());
        EXPECT_EQ(static_cast<int>(expected.size()), dispatcher.getNbHandlers());
        EXPECT_EQ(expected.empty(), dispatcher.isEmpty());
        EXPECT_EQ(row.expectedSubscriptionsOfThird, third.getNbDispatchers());
        EXPECT_EQ(row.expectedSubscriptionsOfThird == 1, dispatcher.isHandlerSubscribed(&third));
        EXPECT_FALSE(dispatcher.isHandlerSubscribed(nullptr));
    }
}

TEST_F(CbDispatcherTest, HandlerRemovedDuringACallIsLeftOutAndAnAddedOneWaits)
{
    auto doomed = std::make_unique<Recorder>("x", log);
    first.onCall = [&](Pixel&) {
        dispatcher.removeHandler(&second);
        doomed.reset();
        dispatcher.addHandler(&third);
    };
    for (auto* const handler : {&first, &second, doomed.get()}) {
        dispatcher.addHandler(handler);
    }

    EXPECT_EQ("A", called());
    EXPECT_EQ("Ah", called());
}

TEST_F(CbDispatcherTest, HandlerMayDestroyItselfWhileItIsCalled)
{
    auto suicidal = std::make_unique<Recorder>("x", log);
    suicidal->onCall = [&](Pixel&) { auto const last = std::move(suicidal); };
    dispatcher.addHandler(suicidal.get());
    dispatcher.addHandler(&first);

    EXPECT_EQ("xA", called());
    EXPECT_EQ("A", called());
}

TEST_F(CbDispatcherTest, LaterHandlersSeeWhatEarlierOnesChanged)
{
    first.onCall = [](Pixel& value) { value.red += 1.0F; };
    second.onCall = [](Pixel& value) { value.red *= 10.0F; };
    dispatcher.addHandler(&first);
    dispatcher.addHandler(&second);
    called();
    EXPECT_EQ(10.0F, pixel.red);
}

TEST_F(CbDispatcherTest, EitherSideUnlinksWhenItDies)
{
    PixelDispatcher other;
    {
        PixelDispatcher shortLived;
        Recorder handler("x", log);
        for (auto* const subscribedTo : {&dispatcher, &shortLived, &other}) {
            subscribedTo->addHandler(&handler);
            subscribedTo->addHandler(&first);
        }
        EXPECT_EQ(3, handler.getNbDispatchers());
    }
    EXPECT_EQ(2, first.getNbDispatchers());
    EXPECT_EQ(1, other.getNbHandlers());
    EXPECT_EQ("A", called());
}

TEST_F(CbDispatcherTest, CallWithoutValueIsReportedOncePerHandlerOfAValue)
{
    EvEventManager& events = EvEventManager::getInstance();
    dispatcher.call();
    EXPECT_EQ(0, events.processEvents());
    dispatcher.addHandler(&first);
    dispatcher.addHandler(&second);
    dispatcher.call();
    EXPECT_EQ(2, events.processEvents());
    EXPECT_EQ(2U, events.takeFailures().size());
    EXPECT_EQ("", log);
}

TEST(CbEmptyDispatcherTest, CallWithoutValueReachesEachHandlerOfEmptyValues)
{
    struct Counter : CbHandler<CbEmptyType> {
        using CbHandler<CbEmptyType>::call;
        void call(CbEmptyType&) override { ++nbCalls; }
        int nbCalls = 0;
    } first, second;
    CbDispatcher<CbEmptyType> dispatcher;
    dispatcher.addHandler(&first);
    dispatcher.addHandler(&second);
    dispatcher.call();
    EXPECT_EQ(1, first.nbCalls);
    EXPECT_EQ(1, second.nbCalls);
}

TEST(CbConstDispatcherTest, ConstantValuesArriveAsTheyAre)
{
    using Color = CoRgbColorTyped<float> const;
    struct Keeper : CbHandler<Color> {
        using CbHandler<Color>::call;
        void call(Color& value) override { kept = &value; }
        Color* kept = nullptr;
    } keeper;
    Color color{1.0F, 2.0F, 3.0F};
    CbDispatcher<Color> dispatcher;
    dispatcher.addHandler(&keeper);
    dispatcher.call(color);
    EXPECT_EQ(&color, keeper.kept);
}

} // namespace
