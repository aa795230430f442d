#pragma once

#include "base/RCBase.h"
#include "base/RCShdPtr.h"

#include <string>

/// How a command is carried out. Our host knows one way.
class PiExecParam {};

/// The undo history of a graph. User-interface thread, as everything in this file.
class PiCommandStack : public RCBase<LkCounter<int>> {
public:
    /// Opens a command: changes made until endCommand form one step. Commands within a command
    /// join it, and its label stays.
    virtual void beginCommand(std::string const& label) = 0;

    /// Closes the command. One in which nothing changed leaves no step. Throws the assertion
    /// failure if none is open.
    virtual void endCommand() = 0;
};

/// Nodes and their history.
class PiGraph : public RCBase<LkCounter<int>> {
public:
    virtual RCShdPtr<PiCommandStack> getCommandStack() const = 0;
};

/// While it lives, all changes form one undoable command.
class PiUndoGuard {
public:
    /// An empty stack throws the null-pointer exception.
    PiUndoGuard(RCShdPtr<PiCommandStack> const& commandStack, std::string const& label,
                PiExecParam const& param);
    PiUndoGuard(PiUndoGuard const&) = delete;
    PiUndoGuard& operator=(PiUndoGuard const&) = delete;
    ~PiUndoGuard();

private:
    RCShdPtr<PiCommandStack> stack;
};

/// While it lives, changes leave no undo record, whatever guard is open.
class PiUndoGuardNoLog {
public:
    /// `keepRedo` asks for undone commands to stay available. Our host keeps them in any case,
    /// since nothing is recorded.
    explicit PiUndoGuardNoLog(bool keepRedo);
    PiUndoGuardNoLog(PiUndoGuardNoLog const&) = delete;
    PiUndoGuardNoLog& operator=(PiUndoGuardNoLog const&) = delete;
    ~PiUndoGuardNoLog();

    /// Whether any such guard lives.
    static bool isActive();
};
