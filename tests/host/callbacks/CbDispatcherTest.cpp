// Subscriptions: order, changes during a call, and the death of either side.

#include "callbacks/CbDispatcher.h"

#include "base/EvEventManager.h"
#include "primitives/CoColor.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
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

TEST_F(CbDispatcherTest, CallsHandlersInTheOrderOfTheirSubscription)
{
    struct Case {
        char const* name;
        std::function<void()> change; ///< of A and B
        std::string expectedCalls;
    };
    Recorder& h = third;
    for (auto const& [name, change, expectedCalls] :
         {Case{"add", [&] { dispatcher.addHandler(&h); }, "ABh"},
          Case{"prepend", [&] { dispatcher.prependHandler(&h); }, "hAB"},
          Case{"insert", [&] { dispatcher.insertHandler(&h); }, "AhB"},
          Case{"add twice", [&] { dispatcher.addHandler(&first); }, "AB"},
          Case{"prepend twice", [&] { dispatcher.prependHandler(&second); }, "AB"},
          Case{"insert twice", [&] { dispatcher.insertHandler(&first); }, "AB"},
          Case{"remove", [&] { dispatcher.removeHandler(&first); }, "B"},
          Case{"remove a stranger", [&] { dispatcher.removeHandler(&h); }, "AB"},
          Case{"reset of a handler", [&] { first.reset(); }, "B"},
          Case{"remove all", [&] { dispatcher.removeAllHandlers(); }, ""},
          Case{"add none", [&] { dispatcher.addHandler(nullptr); }, "AB"},
          Case{"insert none", [&] { dispatcher.insertHandler(nullptr); }, "AB"}}) {
        SCOPED_TRACE(name);
        dispatcher.removeAllHandlers();
        dispatcher.addHandler(&first);
        dispatcher.addHandler(&second);
        change();
        EXPECT_EQ(expectedCalls, called());
        EXPECT_EQ(static_cast<int>(expectedCalls.size()), dispatcher.getNbHandlers());
        EXPECT_EQ(expectedCalls.empty(), dispatcher.isEmpty());
        bool const isThere = expectedCalls.find('h') != std::string::npos;
        EXPECT_EQ(isThere, dispatcher.isHandlerSubscribed(&h));
        EXPECT_EQ(isThere ? 1 : 0, h.getNbDispatchers());
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

TEST_F(CbDispatcherTest, HandlersShareTheValueAndLaterOnesSeeItsChanges)
{
    for (auto* const handler : {&first, &second, &third}) {
        handler->onCall = [](Pixel& value) { value.red = 2 * value.red + 1; };
        dispatcher.addHandler(handler);
    }
    second.onCall = [this](Pixel& value) {
        EXPECT_EQ(&pixel, &value);
        dispatcher.removeAllHandlers();
        EXPECT_EQ(0, third.getNbDispatchers());
    };
    EXPECT_EQ("AB", called());
    EXPECT_EQ(1.0F, pixel.red);
}

TEST_F(CbDispatcherTest, ACallWithinACallTakesTheListAsItIsThen)
{
    first.onCall = [this](Pixel& value) {
        if (value.red == 0.0F) {
            Pixel inner{1, 0, 0, 0};
            dispatcher.removeHandler(&second);
            dispatcher.addHandler(&third);
            dispatcher.call(inner);
            dispatcher.prependHandler(&second); // its turn in the outer call is still to come
        }
    };
    dispatcher.addHandler(&first);
    dispatcher.addHandler(&second);
    EXPECT_EQ("AAhB", called());
    first.onCall = {};
    EXPECT_EQ("BAh", called());
}

/// Writes its name into `log` when called without a value, then does what the test wants done.
class Notified : public CbHandler<CbEmptyType> {
public:
    Notified(std::string handlerName, std::string& sharedLog)
        : name(std::move(handlerName)), log(sharedLog)
    {
    }
    using CbHandler<CbEmptyType>::call;
    void call(CbEmptyType&) override
    {
        log += name;
        onCall();
    }

    std::function<void()> onCall = [] {};

private:
    std::string name;
    std::string& log;
};

TEST(CbDispatcherWithoutValueTest, CallsThoseWhoAreStillThereWhateverAnotherThrows)
{
    std::string log;
    CbDispatcher<CbEmptyType> dispatcher;
    Notified first("A", log);
    Notified second("B", log);
    Notified added("c", log);
    auto doomed = std::make_unique<Notified>("x", log);
    first.onCall = [&] {
        doomed.reset();
        dispatcher.addHandler(&added);
        throw std::runtime_error("cannot draw");
    };
    for (auto* const handler : {&first, doomed.get(), &second}) {
        dispatcher.addHandler(handler);
    }
    dispatcher.call();
    EXPECT_EQ("AB", log);
    dispatcher.removeHandler(&second);
    dispatcher.call();
    EXPECT_EQ("ABAc", log);
    EvEventManager::getInstance().processEvents();
    EXPECT_EQ(std::vector<std::string>(2, "cannot draw"),
              EvEventManager::getInstance().takeFailures());
}

TEST_F(CbDispatcherTest, CallWithoutTheValueThatHandlersTakeIsReportedOncePerHandler)
{
    EvEventManager& events = EvEventManager::getInstance();
    for (std::size_t nbHandlers = 0; nbHandlers < 3; ++nbHandlers) {
        dispatcher.call();
        EXPECT_EQ(static_cast<int>(nbHandlers), events.processEvents());
        auto const failures = events.takeFailures();
        ASSERT_EQ(nbHandlers, failures.size());
        for (auto const& failure : failures) {
            EXPECT_NE(std::string::npos, failure.find("T is CbEmptyType")) << failure;
        }
        dispatcher.addHandler(nbHandlers == 0 ? &first : &second);
    }
    EXPECT_EQ("", log);
}

TEST_F(CbDispatcherTest, HandlerMayDestroyItselfAndThrowAndTheOthersAreCalled)
{
    auto suicidal = std::make_unique<Recorder>("x", log);
    suicidal->onCall = [&](Pixel&) {
        auto const last = std::move(suicidal);
        throw std::runtime_error("cannot draw");
    };
    dispatcher.addHandler(suicidal.get());
    dispatcher.addHandler(&first);

    EXPECT_EQ("xA", called());
    EXPECT_EQ("A", called());
    EvEventManager::getInstance().processEvents();
    EXPECT_EQ(std::vector<std::string>{"cannot draw"},
              EvEventManager::getInstance().takeFailures());
}

TEST_F(CbDispatcherTest, EitherSideUnlinksWhenItDiesOrIsReset)
{
    PixelDispatcher others[2];
    {
        PixelDispatcher shortLived;
        Recorder handler("x", log);
        for (auto* const subscribedTo : {&others[0], &dispatcher, &shortLived, &others[1]}) {
            subscribedTo->addHandler(&handler);
            subscribedTo->addHandler(&first);
        }
        EXPECT_EQ(4, handler.getNbDispatchers());
    }
    EXPECT_EQ(3, first.getNbDispatchers());
    EXPECT_EQ(1, others[0].getNbHandlers());
    EXPECT_EQ("A", called());
    others[0].addHandler(&second);
    first.reset();
    EXPECT_EQ(0, first.getNbDispatchers());
    EXPECT_TRUE(dispatcher.isEmpty() && others[1].isEmpty());
    EXPECT_EQ(1, others[0].getNbHandlers());
    dispatcher.addHandler(&first);
    EXPECT_EQ("A", called());
    EXPECT_FALSE(dispatcher.isHandlerSubscribed(nullptr));
}

} // namespace
