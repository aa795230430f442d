// Processing nodes and their handles: children, threads, and what is said of wrong ones.

#include "pluginAPI/PxNode.h"

#include "base/HostException.h"
#include "pluginAPI/PxNodeHandles.h"
#include "pluginAPI/PxRequestMgr.h"
#include "support/Failures.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

int nbNodes = 0;

class TestNode : public virtual PxNode {
public:
    explicit TestNode(Init const& init) : PxNode(init) { ++nbNodes; }
    ~TestNode() noexcept(false) override { --nbNodes; }
    using PxNode::registerChild;
    using PxNode::unregisterChild;
};

PxNodePtr<PxNode const> asChild(PxStrongHndl<TestNode> const& node)
{
    return PxNodePtr<PxNode const>(node.get());
}

TEST(PxNodeTest, ChildrenStandInTheOrderOfRegistration)
{
    auto const node = makeNode<TestNode>();
    auto const a = makeNode<TestNode>();
    auto const b = makeNode<TestNode>();
    node->registerChild(asChild(a));
    node->registerChild(asChild(b));
    node->registerChild(asChild(a));
    node->registerChild({});
    EXPECT_EQ(node->getChildren(), (std::vector<PxNode const*>{a.get(), b.get(), a.get()}));
    node->unregisterChild(asChild(a));
    node->unregisterChild({});
    EXPECT_EQ(node->getChildren(), (std::vector<PxNode const*>{b.get(), a.get()}));
    node->unregisterChild(asChild(a));
    node->unregisterChild(asChild(a));
    EXPECT_EQ(node->getChildren(), std::vector<PxNode const*>{b.get()});
}

TEST(PxNodeTest, CyclesAreRefused)
{
    auto const a = makeNode<TestNode>();
    auto const b = makeNode<TestNode>();
    auto const c = makeNode<TestNode>();
    a->registerChild(asChild(b));
    b->registerChild(asChild(c));
    EXPECT_THROW(c->registerChild(asChild(a)), AssertionFailure);
    EXPECT_THROW(c->registerChild(asChild(c)), AssertionFailure);
    EXPECT_TRUE(c->getChildren().empty());
    a->registerChild(asChild(c)); // two ways to one node are no cycle
}

TEST(PxNodeHandlesTest, AreNeitherMadeNorReleasedOnWorkers)
{
    nbNodes = 0;
    auto node = makeNode<TestNode>();
    PxStrongHndl<TestNode> handle = node;
    PxStrongHndl<TestNode> const empty;
    {
        PxWorkerScope const worker;
        std::function<void()> const uses[] = {[&] { PxStrongHndl<TestNode> copy(node); },
                                              [&] { handle = empty; }, [&] { handle.reset(); },
                                              [&] { castNode<PxNode const>(node); },
                                              [&] { makeNode<TestNode>(); }};
        for (auto const& use : uses) {
            EXPECT_EQ(catchFailure<AssertionFailure>(use)->getExpression(),
                      "!PxRequestMgr::getInstance().isWorkerThreadCurrent()");
        }
        handle = node; // the same node: nothing is set
        PxStrongHndl<TestNode> copyOfEmpty(empty);
        EXPECT_TRUE(handle->getChildren().empty());
    }
    handle.reset();
    EXPECT_EQ(node->getNbReferences(), 1);
    EXPECT_EQ(nbNodes, 1);
    node.reset();
    EXPECT_EQ(nbNodes, 0);
}

} // namespace
