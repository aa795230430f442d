// Processing nodes and their handles: children, threads, and what is said of wrong ones.

#include "pluginAPI/PxNode.h"

#include "base/HostException.h"
#include "pluginAPI/PxNodeHandles.h"
#include "pluginAPI/PxRequestMgr.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

int nbAlive = 0;

class TestNode : public virtual PxNode {
public:
    explicit TestNode(Init const& init) : PxNode(init) { ++nbAlive; }
    ~TestNode() noexcept(false) override { --nbAlive; }
    using PxNode::registerChild;
    using PxNode::unregisterChild;
};

class OtherNode : public virtual PxNode {
public:
    explicit OtherNode(Init const& init) : PxNode(init) {}
};

PxNodePtr<PxNode const> asChild(PxStrongHndl<TestNode> const& node)
{
    return PxNodePtr<PxNode const>(node.get());
}

std::string getExpression(std::function<void()> const& call)
{
    try {
        call();
    } catch (AssertionFailure const& failure) {
        return failure.getExpression();
    }
    return "";
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
    EXPECT_NE(getExpression([&] { c->registerChild(asChild(a)); }), "");
    EXPECT_NE(getExpression([&] { c->registerChild(asChild(c)); }), "");
    EXPECT_TRUE(c->getChildren().empty());
    a->registerChild(asChild(c)); // two ways to one node are no cycle
}

TEST(PxNodeHandlesTest, AreNeitherMadeNorReleasedOnWorkers)
{
    nbAlive = 0;
    auto const node = makeNode<TestNode>();
    PxStrongHndl<TestNode> handle = node;
    PxStrongHndl<TestNode> const empty;
    {
        PxWorkerScope const worker;
        for (auto const& use : {std::function<void()>([&] { PxStrongHndl<TestNode> copy(node); }),
                                std::function<void()>([&] { handle = empty; }),
                                std::function<void()>([&] { handle.reset(); }),
                                std::function<void()>([&] { castNode<PxNode const>(node); }),
                                std::function<void()>([&] { makeNode<TestNode>(); })}) {
            EXPECT_EQ(getExpression(use), "!PxRequestMgr::getInstance().isWorkerThreadCurrent()");
        }
        handle = node; // the same node: nothing is set
        PxStrongHndl<TestNode> copyOfEmpty(empty);
        EXPECT_TRUE(handle->getChildren().empty());
    }
    handle.reset();
    EXPECT_EQ(node->getNbReferences(), 1);
}

TEST(PxNodeHandlesTest, NodeGoesWithItsLastHandle)
{
    nbAlive = 0;
    {
        auto first = makeNode<TestNode>();
        PxNodePtr<PxNode const> const second = asChild(first);
        first = {};
        EXPECT_EQ(nbAlive, 1);
    }
    EXPECT_EQ(nbAlive, 0);
}

TEST(PxNodeHandlesTest, EmptyAndWrongOnesAreNamed)
{
    PxStrongHndl<PxNode> const empty;
    EXPECT_TRUE(castNode<OtherNode>(empty).isNull());
    try {
        empty->getChildren();
        ADD_FAILURE();
    } catch (NullPointerException const& failure) {
        EXPECT_STREQ(failure.what(), "Null pointer: PxNode");
    }
    try {
        castNode<OtherNode const>(makeNode<TestNode>());
        ADD_FAILURE();
    } catch (CastFailedException const& failure) {
        EXPECT_STREQ(failure.what(), "Cast failed: from (anonymous namespace)::TestNode to "
                                     "(anonymous namespace)::OtherNode");
    }
    EXPECT_THROW(PxNode::init(empty), NullPointerException);
}

} // namespace
