// The undo history: what makes a step, what leaves none, and the way back.

#include "runtime/undo/HostCommandStack.h"

#include "base/EvEventManager.h"
#include "base/HostException.h"
#include "callbacks/CbFunction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace {

struct History : ValueOwner {
    bool recordChange(HostValue& value, std::shared_ptr<ValueState const> const& before) override
    {
        stack->record(value, before);
        return true;
    }
    void tellChange(ValueChange const&) override {}
    void set(double number) { value->setState(Animated<double>(number)); }
    /// As a step of its own.
    void step(double number)
    {
        PiUndoGuard const guard(stack, std::to_string(static_cast<int>(number)), PiExecParam());
        set(number);
    }
    double get() const { return value->getValue(); }

    RCShdPtr<HostCommandStack> stack = makeShared<HostCommandStack>();
    RCShdPtr<HostTypedValue<double>> value =
        makeShared<HostTypedValue<double>>("x", 0.0, RCShdPtr<PiInputPolicy const>(), this);
};

TEST(HostCommandStackTest, GuardsMakeOneStepOfAllChanges)
{
    History history;
    {
        PiUndoGuard const outer(history.stack, "Outer", PiExecParam());
        history.set(1);
        PiUndoGuard const inner(history.stack, "Inner", PiExecParam());
        history.set(2);
    }
    ASSERT_EQ(history.stack->getNbCommands(), 1U);
    EXPECT_EQ(history.stack->getUndoLabel(), "Outer");
    history.stack->undo();
    EXPECT_EQ(history.get(), 0.0);
    EXPECT_EQ(history.stack->getRedoLabel(), "Outer");
    history.stack->redo();
    EXPECT_EQ(history.get(), 2.0);
    EXPECT_EQ(history.stack->getNbCommands(), 1U);
    history.set(3); // outside of commands
    {
        PiUndoGuard const guard(history.stack, "Nothing changed", PiExecParam());
        PiUndoGuardNoLog const noLog(false);
        {
            PiUndoGuardNoLog const inner(false);
        }
        history.set(4);
    }
    EXPECT_EQ(history.stack->getNbCommands(), 1U);
    history.step(5); // what is recorded again starts from what was not
    history.stack->undo();
    EXPECT_EQ(history.get(), 4.0);
    EXPECT_THROW(history.stack->endCommand(), AssertionFailure);
}

TEST(HostCommandStackTest, ANewStepDropsWhatWasUndone)
{
    History history;
    for (double const number : {1.0, 2.0, 3.0}) {
        history.step(number);
    }
    history.stack->undo();
    history.stack->undo();
    EXPECT_EQ(history.get(), 1.0);
    {
        PiUndoGuard const guard(history.stack, "New", PiExecParam());
        history.set(7);
        history.stack->undo(); // a command is open
        history.stack->redo();
        EXPECT_EQ(history.get(), 7.0);
        EXPECT_EQ(history.stack->getNbCommands(), 3U);
    }
    EXPECT_FALSE(history.stack->canRedo());
    EXPECT_EQ(history.stack->getNbCommands(), 2U);
    history.stack->undo();
    EXPECT_EQ(history.get(), 1.0);
}

TEST(HostCommandStackTest, AnAbandonedCommandAndOneThatEndsWhereItBeganLeaveNoStep)
{
    History history;
    history.step(1);
    std::vector<ChangeCause> causes;
    CbFunction<ValueChange const> handler([&](auto& change) { causes.push_back(change.cause); });
    history.value->addHandler(&handler);
    {
        PiUndoGuard const drag(history.stack, "Drag", PiExecParam());
        history.set(2);
        history.set(3);
        history.stack->abandonCommand();
        EXPECT_EQ(history.get(), 1.0);
    }
    {
        PiUndoGuard const drag(history.stack, "There and back", PiExecParam());
        history.set(2);
        history.set(1);
    }
    history.stack->abandonCommand(); // none is open
    EXPECT_EQ(causes, (std::vector{ChangeCause::Edit, ChangeCause::Edit, ChangeCause::Abandon,
                                   ChangeCause::Edit, ChangeCause::Edit}));
    EXPECT_EQ(history.stack->getNbCommands(), 1U);
    {
        PiUndoGuard const drag(history.stack, "Sign", PiExecParam());
        history.set(5);
        history.stack->abandonCommand();
        history.set(-0.0); // what comes after belongs to the command
    }
    history.stack->undo();
    history.stack->undo();
    EXPECT_FALSE(std::signbit(history.get()));
    history.stack->redo();
    history.stack->redo();
    EXPECT_TRUE(std::signbit(history.get()));
}

TEST(HostCommandStackTest, TellsWhatCanBeUndoneAndRedoneOnceEach)
{
    History history;
    std::vector<std::string> told;
    CbFunction<HistoryState const> handler([&](HistoryState const& state) {
        told.push_back((state.canUndo ? "<" + state.undoLabel : "") +
                       (state.canRedo ? ">" + state.redoLabel : ""));
    });
    // The one before undoes at once; this one must not end with the older state.
    CbFunction<HistoryState const> hasty([&](HistoryState const& state) {
        if (state.undoLabel == "9") {
            history.stack->undo();
        }
    });
    history.stack->addHistoryHandler(&hasty);
    history.stack->addHistoryHandler(&handler);
    history.step(1);
    history.step(2);
    history.stack->undo();
    history.stack->undo();
    history.stack->undo(); // nothing left
    history.stack->redo();
    history.step(9);
    auto const saved = history.stack->getHistoryState().lastStep; // step 1
    history.stack->undo();
    history.set(0.5); // leaves no step
    history.step(1);  // another one of that label
    EXPECT_NE(history.stack->getHistoryState().lastStep, saved);
    EXPECT_EQ(told, (std::vector<std::string>{"<1", "<2", "<1>2", ">1", "<1>2", "<9", "<1>9", ">1",
                                              "<1"}));
}

TEST(HostCommandStackTest, HandlersOfAnUndoMayThrowUndoAndChangeAndLoseNoStep)
{
    History history;
    auto const follower = makeShared<HostTypedValue<double>>("y", 0.0, nullptr, &history);
    CbFunction<ValueChange const> throwing([](auto&) { throw HostException("no"); });
    CbFunction<ValueChange const> following([&](auto&) {
        PiUndoGuard const guard(history.stack, "Follow", PiExecParam());
        follower->setValue(2 * history.get());
    });
    bool isHasty = true;
    CbFunction<ValueChange const> hasty([&](ValueChange const& change) {
        if (change.cause == ChangeCause::Undo && std::exchange(isHasty, false)) {
            history.stack->undo();
        }
    });
    std::vector<double> told;
    CbFunction<ValueChange const> last([&](ValueChange const& change) {
        told.push_back(std::get<Animated<double>>(*change.after).evaluate(0).getValue());
    });
    for (auto* const handler : {&throwing, &following, &hasty, &last}) {
        history.value->addHandler(handler);
    }
    for (double const number : {1.0, 2.0, 3.0}) {
        history.step(number);
    }
    history.stack->undo(); // and once more by the hasty one
    EXPECT_EQ(history.get(), 1.0);
    EXPECT_EQ(follower->getValue(), 2.0);
    history.stack->redo();
    history.stack->redo();
    EXPECT_EQ(history.get(), 3.0);
    EXPECT_EQ(follower->getValue(), 6.0);
    EXPECT_EQ(history.stack->getNbCommands(), 3U);
    EXPECT_EQ(told, (std::vector<double>{1, 2, 3, 2, 1, 2, 3}));
    EvEventManager::getInstance().processEvents();
    EXPECT_EQ(EvEventManager::getInstance().takeFailures(), std::vector<std::string>(7, "no"));
}

TEST(HostCommandStackTest, AHandlerMayLetTheHistoryGo)
{
    for (bool const isRedo : {false, true}) {
        History history;
        HostCommandStack& stack = *history.stack;
        history.step(1);
        history.step(2);
        stack.undo();
        CbFunction<ValueChange const> dropping([&](auto&) { history.stack = {}; });
        history.value->addHandler(&dropping);
        isRedo ? stack.redo() : stack.undo();
        EXPECT_EQ(history.get(), isRedo ? 2.0 : 0.0);
    }
}

} // namespace
