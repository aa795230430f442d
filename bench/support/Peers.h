#pragma once

#include "support/Looks.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Other libraries that are installed, doing the same work on the same frame in one thread.
namespace bench {

struct Peer {
    std::string name;
    std::function<void(Frame const& source, Frame const& destination)> process;
};

/// Empty for a library that this build does not have or that has nothing for the work.
std::vector<Peer> makePeers(Work const& work, Look const& look);

void addOpenColorIO(std::vector<Peer>& peers, Work const& work, Look const& look);
void addOpenImageIO(std::vector<Peer>& peers, Work const& work, Look const& look);

} // namespace bench
