#pragma once

#include "FrameNode.h"
#include "PremultNodes.h"
#include "pluginAPI/PiToolProtocol.h"
#include "runtime/graph/HostGraph.h"

#include <memory>
#include <mutex>
#include <vector>

/// Starts the packages of host and tool, which are linked into the bundle; stops them. What else
/// belongs to a user-interface thread is done by one thread at a time under uiMutex: hosts render
/// on any thread, and a render that finds no idle node makes one.
void startPackages();
void stopPackages();
std::mutex& uiMutex();

/// The tool. Its packages run.
PiToolProtocol const& findTool();

/// How a render wants its pixels.
struct ChainUse {
    bool isUnpremultiplied = false; ///< needs float RGBA pixels
    double mix = 1.0;
    bool isMasked = false;
};

/// A node of the tool with its chains, for one render call at a time. Made and destroyed under
/// uiMutex, which setting values takes by itself. Several threads may evaluate the chain of one
/// render at once.
class ToolNode {
public:
    ToolNode();

    /// Gives the tool's inputs their values. Throws ValueError.
    void setValues(NodeValues const& values);

    /// The chain for that use; it stays until the next call.
    PxImageProtocol const& prepareChain(ChainUse const& use);

    FrameNode& getSource() { return *source; }
    FrameNode& getMask() { return *mask; }

private:
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;
    NodeValues current;
    RCShdPtr<HostValue> mix;
    RCShdPtr<HostValue> premultiplies;
    PxStrongHndl<FrameNode> source;
    PxStrongHndl<FrameNode> mask;
    // Chains: the tool alone, blended with the source, and blended by a mask.
    PxNodePtr<PxImageProtocol const> plain;
    PxNodePtr<PxImageProtocol const> mixed;
    PxNodePtr<PxImageProtocol const> masked;
};

/// Nodes that wait for the next render. As many are made as render at once.
class ToolNodePool {
public:
    /// A node for the life of the lease.
    class Lease {
    public:
        Lease(ToolNodePool& lendingPool, std::unique_ptr<ToolNode> leasedNode);
        Lease(Lease const&) = delete;
        Lease& operator=(Lease const&) = delete;
        ~Lease();
        ToolNode& operator*() const { return *node; }
        ToolNode* operator->() const { return node.get(); }

    private:
        ToolNodePool& pool;
        std::unique_ptr<ToolNode> node;
    };

    /// Any thread.
    Lease take();

    /// Lets go of all nodes that nobody uses.
    void clear();

private:
    std::vector<std::unique_ptr<ToolNode>> idle; // locked by uiMutex
};
