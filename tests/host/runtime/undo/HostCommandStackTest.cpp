// The undo history: what makes a step, what leaves none, and the way back.

#include "runtime/undo/HostCommandStack.h"

#include <gtest/gtest.h>

namespace {

struct History : ValueObserver {
    void valueChanged(HostValue& value, ValueState const& before) override
    {
        stack->record(value, before, *value.getState());
    }
    void set(double number) { value->setState(Animated<double>(number)); }
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
        history.set(4);
    }
    EXPECT_EQ(history.stack->getNbCommands(), 1U);
}

TEST(HostCommandStackTest, ANewStepDropsWhatWasUndone)
{
    History history;
    for (double const number : {1.0, 2.0, 3.0}) {
        PiUndoGuard const guard(history.stack, std::to_string(number), PiExecParam());
        history.set(number);
    }
    history.stack->undo();
    history.stack->undo();
    EXPECT_EQ(history.get(), 1.0);
    {
        PiUndoGuard const guard(history.stack, "New", PiExecParam());
        history.set(7);
        history.stack->undo(); // a command is open
        EXPECT_EQ(history.get(), 7.0);
    }
    EXPECT_FALSE(history.stack->canRedo());
    EXPECT_EQ(history.stack->getNbCommands(), 2U);
    history.stack->undo();
    EXPECT_EQ(history.get(), 1.0);
}

} // namespace
