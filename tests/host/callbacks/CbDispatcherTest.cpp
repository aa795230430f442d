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

TEST_F(CbDispatcherTest, HandlerMayDestroyItselfWhileItIsCalled)
{
    auto suicidal = std::make_unique<Recorder>("x", log);
    suicidal->onCall = [&](Pixel&) { auto const last = std::move(suicidal); };
    dispatcher.addHandler(suicidal.get());
    dispatcher.addHandler(&first);

    EXPECT_EQ("xA", called());
    EXPECT_EQ("A", called());
}

TEST_F(CbDispatcherTest, HandlerThatThrowsIsReportedAndTheOthersAreCalled)
{
    first.onCall = [](Pixel&) { throw std::runtime_error("cannot draw"); };
    dispatcher.addHandler(&first);
    dispatcher.addHandler(&second);

    EXPECT_EQ("AB", called());
    EvEventManager::getInstance().processEvents();
    EXPECT_EQ(std::vector<std::string>{"cannot draw"},
              EvEventManager::getInstance().takeFailures());
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

} // namespace
