// A tool that is described by policies: when its description runs and what comes of it.

#include "pluginAPI/PiToolPolicyProtocol.h"

#include "base/HostException.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using Descriptor = PiImageModifier::Descriptor;

class Controller : public PiImageModifier {
public:
    Controller() : PiImageModifier("") {}
    void createModifierProcNode(PxStrongHndl<PxNode const>&, PiInputNodeBuilder&,
                                PxNodePtr<PxImageProtocol const> const&) override
    {
    }
};

} // namespace

template <>
void PiToolPolicyProtocol<Controller, Descriptor>::describe(Descriptor& descriptor) const
{
    auto const policy = PiSwitchInputPolicy::create(true, false, false);
    PiImageModifier::addSingleImageInput(descriptor, {}, PiSocketType::Single);
    descriptor.requires_("First", PiSocketType::Switch, policy, PiSocketType::Single);
    PiStructuredPolicyDescriptor group;
    group.add("Second", PiSocketType::Switch, policy, PiSocketType::Single);
    descriptor.requires_("Group", group, PiSocketType::Single);
}

namespace {

class Tool : public PiImageModifierInfo<Controller> {
public:
    using Base = PiImageModifierInfo<Controller>;

    Tool() : Base("Tool", "", "", "", "", 1, "", Public, SingleTool) {}

    using Base::describe;
    void describe(Descriptor& descriptor) const override
    {
        ++nbDescriptions;
        doDescribe(descriptor);
    }
    void copyFromDescriptor(Descriptor& descriptor) const override
    {
        ++nbCopies;
        Base::copyFromDescriptor(descriptor);
    }

    std::function<void(Descriptor&)> doDescribe = [this](Descriptor& descriptor) {
        Base::describe(descriptor);
    };
    mutable int nbDescriptions = 0;
    mutable int nbCopies = 0;
};

constexpr void (*questions[])(Tool const&) = {
    [](Tool const& tool) { EXPECT_EQ(tool.getPrimaryInput(), "Input"); },
    [](Tool const& tool) { EXPECT_TRUE(tool.canMute()); },
    [](Tool const& tool) { EXPECT_TRUE(tool.canAffectColourAndAlpha()); },
    [](Tool const& tool) { EXPECT_TRUE(tool.canAffectAlpha()); },
    [](Tool const& tool) { EXPECT_TRUE(tool.canAffectColour()); },
    [](Tool const& tool) { EXPECT_FALSE(tool.canBeDisplayModifier()); },
    [](Tool const& tool) {
        EXPECT_EQ(tool.getMaskingMode(), PiImageModifierTypes::MaskAfterChain);
    },
    [](Tool const& tool) { tool.createController(); },
    [](Tool const& tool) {
        PiToolDescriptor record;
        static_cast<PiToolProtocol const&>(tool).describe(record);
        EXPECT_EQ(record.getDeclarations().size(), 8U); // described anew: this one does not count
        --tool.nbDescriptions;
    },
};

TEST(PiToolPolicyProtocolTest, AnyFirstQuestionDescribesAndNoLaterOne)
{
    for (auto const first : questions) {
        Tool const tool;
        EXPECT_EQ(tool.nbDescriptions, 0);
        first(tool);
        int const nbAtFirst = tool.nbDescriptions;
        for (auto const later : questions) {
            later(tool);
        }
        EXPECT_EQ(tool.nbDescriptions, nbAtFirst);
        EXPECT_EQ(tool.nbCopies, 1);
    }
}

TEST(PiToolPolicyProtocolTest, AnswersFollowADerivedDescription)
{
    struct Case {
        PiImageModifierTypes::AffectType affect;
        bool both, alpha, colour;
    };
    for (auto const& [affect, both, alpha, colour] :
         {Case{PiImageModifierTypes::AffectColour, false, false, true},
          Case{PiImageModifierTypes::AffectColourAndAlpha, true, true, true},
          Case{PiImageModifierTypes::AffectAlpha, false, true, false}}) {
        Tool tool;
        tool.doDescribe = [affect](Descriptor& descriptor) {
            PiImageModifier::addSingleImageInput(descriptor, {}, PiSocketType::Single);
            descriptor.setAffect(affect);
        };
        EXPECT_EQ(tool.canAffectColourAndAlpha(), both) << affect;
        EXPECT_EQ(tool.canAffectAlpha(), alpha) << affect;
        EXPECT_EQ(tool.canAffectColour(), colour) << affect;
        EXPECT_EQ(tool.getMaskingMode(), PiImageModifierTypes::NoMasking);
    }
}

TEST(PiToolPolicyProtocolTest, ControllersGetThePoliciesAndThoseOfMaskingIfThereIsAMask)
{
    for (bool const masks : {true, false}) {
        Tool tool;
        if (!masks) {
            tool.doDescribe = [&](Descriptor& descriptor) {
                tool.PiToolPolicyProtocol<Controller, Descriptor>::describe(descriptor);
            };
        }
        OPtr<PiNodeController> const made = tool.createController();
        EXPECT_NE(made.get(), tool.createController().get());
        auto const& controller = dynamic_cast<Controller const&>(*made);
        EXPECT_FALSE(controller.getInputPolicy("First").isNull());
        EXPECT_FALSE(controller.getInputPolicy("Group.Second").isNull());
        EXPECT_EQ(controller.getInputPolicy("Mix").isNull(), !masks);
    }
}

TEST(PiToolPolicyProtocolTest, ToolsThatHaveNoPrimaryInputAreRefused)
{
    Tool tool;
    tool.doDescribe = [](Descriptor&) {};
    EXPECT_THROW(tool.canMute(), AssertionFailure);
    EXPECT_THROW(tool.canMute(), AssertionFailure);
}

} // namespace
