// What the host is told about the tool: names, order, types, ranges and defaults.

#include "ToolBench.h"

#include "runtime/values/NumberText.h"

namespace {

using memoryHost::Journal;
using reference::Mode;

std::string describePolicy(RCShdPtr<PiInputPolicy const> const& policy)
{
    if (auto const* const range = dynamic_cast<PiRangeInputPolicy<double> const*>(policy.get())) {
        return " " + formatNumber(range->getMinimum()) + ".." + formatNumber(range->getMaximum()) +
               " " + formatNumber(range->getDefault()) + (range->isAnimatable() ? " a" : "") +
               (range->isClamped() ? " c" : "");
    }
    if (auto const* const flags = dynamic_cast<PiSwitchInputPolicy const*>(policy.get())) {
        return std::string(flags->isAnimatable() ? " a" : "") +
               (flags->isOnByDefault() ? " on" : " off") + (flags->isInverted() ? " i" : "");
    }
    if (auto const* const image = dynamic_cast<PiImageInputPolicy const*>(policy.get())) {
        std::string numbers;
        for (int const number : {image->getComponentCode(), image->getDepthCode(),
                                 image->getStreamCode(), static_cast<int>(image->getResetType())}) {
            numbers += " " + std::to_string(number);
        }
        return numbers + (image->isPrimary() ? " p" : "") + (image->isOptional() ? " o" : "");
    }
    std::string text;
    if (auto const* const choices = dynamic_cast<PiEnumPolicy const*>(policy.get())) {
        for (auto const& [value, label] : choices->getPairs()) {
            text += " " + std::to_string(value) + "=" + label;
        }
        text +=
            ", " + std::to_string(choices->getDefault()) + (choices->isAnimatable() ? " a" : "");
    }
    return text;
}

/// "NAME TYPE POLICY" of every input below `member`.
void describeInput(std::string const& prefix, PiStructuredPolicyDescriptor::Member const& member,
                   Journal& lines)
{
    if (member.type) {
        lines.push_back(prefix + member.name + " " + std::to_string(member.type->getCode()) +
                        describePolicy(member.policy));
    }
    for (auto const& inner : member.structure.getMembers()) {
        describeInput(prefix + member.name + ".", inner, lines);
    }
}

Journal describeTool()
{
    ToolBench bench;
    Journal lines;
    for (PiDeclaration const& declaration : bench.getNode().getDeclarations()) {
        if (declaration.kind == PiDeclaration::Stores) {
            lines.push_back("stores " + declaration.input.name + " " +
                            std::to_string(declaration.valueType->getCode()));
        } else if (declaration.kind == PiDeclaration::Requires) {
            describeInput("", declaration.input, lines);
        }
    }
    return lines;
}

void addParams(Mode mode, int param, std::string const& policy, Journal& lines)
{
    for (int channel = 0; channel < 3; ++channel) {
        lines.push_back(getParamInputName(mode, param, channel) + " 1" + policy);
    }
}

TEST(RemapColorDescriptionTest, DeclaresEverythingInOrder)
{
    Journal expected{"stores Mute 0",
                     "stores Affect 2",
                     "Input 5 3 7 1 0 p",
                     "Mode 2 0=Linear 1=EXRDisplay, 0",
                     "Output Depth 2 0=8 Bit 1=16 Bit (float) 2=32 Bit (float) 3=Input Depth, 3",
                     "Adjust 0 a on",
                     "Adjust Curve.Red 11",
                     "Adjust Curve.Green 11",
                     "Adjust Curve.Blue 11",
                     "stores Histo Zoom 1",
                     "stores Histo Display 2",
                     "stores Channel Display 2",
                     "stores Curve Display 2",
                     "stores InputMinLink 0",
                     "stores InputMaxLink 0",
                     "stores OutputMinLink 0",
                     "stores OutputMaxLink 0",
                     "stores LinearGammaLink 0"};
    for (int param = 0; param < 5; ++param) {
        bool const hasPolicy = param % 2 == 1 || param == 4;
        addParams(Mode::Linear, param, hasPolicy ? " -2147483647..2147483647 1 a" : "", expected);
    }
    expected.push_back("Linear.Clamp 0 a off");
    for (char const* const link : {"Exposure", "Defog", "KneeLow", "KneeHigh", "Gamma"}) {
        expected.push_back(std::string("stores ") + link + "Link 0");
    }
    addParams(Mode::ExrDisplay, 0, " -10..10 0 a", expected);
    addParams(Mode::ExrDisplay, 1, " 0..1.7976931348623157e+308 0 a", expected);
    addParams(Mode::ExrDisplay, 2, " 3.5..7.5 5 a", expected);
    addParams(Mode::ExrDisplay, 3, " -3..3 0 a", expected);
    addParams(Mode::ExrDisplay, 4,
              " -1.7976931348623157e+308..1.7976931348623157e+308 2.200000022 a", expected);
    for (char const* const line :
         {"stores Plot Color 6", "stores Plot Color Enabled 0", "Mask 5", "Mix 1"}) {
        expected.emplace_back(line);
    }
    EXPECT_EQ(describeTool(), expected);
}

TEST(RemapColorNamesTest, OnlyChannelsHaveCurves)
{
    Journal curves;
    for (int const channel : {0, 1, 2, 3, -1, 1000}) {
        curves.push_back(
            RemapColorController::getCurveName(static_cast<RemapColorTool::Channel>(channel)));
    }
    EXPECT_EQ(curves,
              (Journal{"Adjust Curve.Red", "Adjust Curve.Green", "Adjust Curve.Blue", "", "", ""}));
}

} // namespace
