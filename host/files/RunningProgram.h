#pragma once

#include <string>
#include <vector>

// What can be told of the process that runs. Any thread.

/// Name of the machine in its network.
std::string findHostName();

/// The words that the process was started with, its name first; none where the system keeps them to
/// itself.
std::vector<std::string> listOwnWords();

/// Now in universal time: "2030-01-31T23:59:59Z".
std::string formatUniversalTime();
