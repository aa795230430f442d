#pragma once

#include "editor/model/document/AsideTask.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// A program that works aside: without input, its standard output dropped, heard line by line on
/// standard error. It is asked to end (SIGTERM) when whoever started it ends, in whatever way.
/// User-interface thread.
class ChildProgram {
public:
    struct Listener {
        std::function<void(std::string const& line)> line;
        /// The exit status, or 128 and the signal's number. May destroy the program.
        std::function<void(int status)> ended;
    };

    /// The first word is the program's file. `listener` is called later on. Throws
    /// SurroundingsError where there is no such program or it cannot be started.
    ChildProgram(std::vector<std::string> const& words, Listener listener);

    /// Asks it to end and waits for that, but not for long.
    ~ChildProgram();

    /// Asks it to end; `ended` is still called.
    void stop();

private:
    struct Process;
    std::shared_ptr<Process> process;
    std::unique_ptr<AsideTask> task;
};
