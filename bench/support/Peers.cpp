#include "support/Peers.h"

namespace bench {

std::vector<Peer> makePeers(Work const& work, Look const& look)
{
    std::vector<Peer> peers;
#ifdef REMAPCOLOR_BENCH_OPENCOLORIO
    addOpenColorIO(peers, work, look);
#endif
    addOpenImageIO(peers, work, look);
    return peers;
}

} // namespace bench
