// Packages: the order of starting and ending, and what is refused.

#include "base/InPackageInit.h"

#include "base/HostException.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <typeinfo>

namespace {

std::string journal;

/// Tags make types of their own.
template <char Letter>
class Package : public InPackageInit {
public:
    Package() : InPackageInit(std::string("test") + Letter) { registerPackage(); }
    void beforeDependencies() override { journal += "<"; }
    void afterDependencies() override { journal += ">"; }
    void setInteractive(bool interactive) override { journal += interactive ? "!" : "?"; }
    void startUp() override
    {
        journal += Letter;
        if (fails) {
            throw std::runtime_error("no licence");
        }
    }
    void shutDown() override { journal += std::string("-") + Letter; }

    bool fails = false;
};

struct InPackageInitTest : ::testing::Test {
    InPackageInitTest()
    {
        registry.startPackages(false); // the host's own
        journal.clear();
    }
    ~InPackageInitTest() override { registry.shutDownPackages(); }

    InPackageRegistry& registry = InPackageRegistry::getInstance();
};

TEST_F(InPackageInitTest, DependenciesStartFirstAndEndLastAndEachOnce)
{
    Package<'a'> first;
    Package<'b'> second;
    Package<'c'> third;
    first.addDependency(&typeid(third));
    first.addDependency(&typeid(second));
    third.addDependency(&typeid(second));
    EXPECT_TRUE(registry.hasPackageToStart());
    EXPECT_EQ(registry.find("testb"), &second);
    registry.startPackages(true);
    EXPECT_EQ(journal, "<>!b<>!c<>!a");
    EXPECT_FALSE(registry.hasPackageToStart());
    registry.startPackages(true);
    EXPECT_EQ(journal, "<>!b<>!c<>!a");
    {
        Package<'d'> const fourth;
        registry.startPackages(false);
        EXPECT_TRUE(registry.isRunning(fourth));
    } // dies while it runs
    EXPECT_EQ(registry.find("testd"), nullptr);
    EXPECT_FALSE(registry.hasPackageToStart());
    journal.clear();
    registry.shutDownPackages();
    EXPECT_EQ(journal, "-a-c-b");
    EXPECT_FALSE(registry.isRunning(first));
}

TEST_F(InPackageInitTest, CirclesMissingPackagesTakenNamesAndFailuresAreRefused)
{
    Package<'a'> first;
    Package<'b'> second;
    first.addDependency(&typeid(second));
    second.addDependency(&typeid(first));
    EXPECT_THROW(registry.startPackages(false), AssertionFailure);
    Package<'c'> needsMore;
    needsMore.addDependency(&typeid(int));
    EXPECT_THROW(registry.startPackages(false), AssertionFailure);
    EXPECT_EQ(journal, "");
}

TEST_F(InPackageInitTest, APackageThatFailsDoesNotRunAndOneOfATakenNameIsForgotten)
{
    Package<'a'> const first;
    Package<'b'> failing;
    failing.fails = true;
    EXPECT_THROW(registry.startPackages(false), std::runtime_error);
    EXPECT_TRUE(registry.isRunning(first));
    EXPECT_FALSE(registry.isRunning(failing));
    failing.fails = false;
    Package<'a'> const twin;
    EXPECT_THROW(registry.startPackages(false), AssertionFailure);
    EXPECT_NO_THROW(registry.startPackages(false));
    EXPECT_EQ(journal, "<>?a<>?b<>?b");
    EXPECT_EQ(registry.find("testa"), &first);
}

} // namespace
