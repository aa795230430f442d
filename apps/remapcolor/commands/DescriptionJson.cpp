// The tool as JSON.

#include "remapcolor/commands/DescriptionJson.h"

#include "base/Assertions.h"
#include "base/InBuildInfo.h"
#include "runtime/project/ProjectValues.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;
using Input = PiStructuredPolicyDescriptor::Member;

constexpr int indentation = 2;

char const* nameType(PiSocketType const& type)
{
    switch (type.getCode()) {
    case PiSocketType::Switch: return "switch";
    case PiSocketType::Double: return "double";
    case PiSocketType::IntegerEnumeration: return "enumeration";
    case PiSocketType::Image: return "image";
    case PiSocketType::Curve: return "curve";
    }
    Assertions::throwProgramAborted(__FILE__, __LINE__, "type.getCode()");
}

char const* nameStoredType(PiValueType const& type)
{
    switch (type.getCode()) {
    case PiValueType::Boolean: return "boolean";
    case PiValueType::Double: return "double";
    case PiValueType::Integer: return "integer";
    case PiValueType::DoubleArray: return "double array";
    }
    Assertions::throwProgramAborted(__FILE__, __LINE__, "type.getCode()");
}

Json describeChoices(PiEnumPolicy const& policy)
{
    Json choices = Json::array();
    for (auto const& [number, label] : policy.getPairs()) {
        choices.push_back({{"value", number}, {"label", label}});
    }
    return {{"choices", choices},
            {"default", policy.getDefault()},
            {"animatable", policy.isAnimatable()}};
}

/// Null for an input without policy.
Json describePolicy(PiInputPolicy const* policy)
{
    if (auto const* const range = dynamic_cast<PiRangeInputPolicy<double> const*>(policy)) {
        return {{"minimum", range->getMinimum()},
                {"maximum", range->getMaximum()},
                {"default", range->getDefault()},
                {"animatable", range->isAnimatable()},
                {"clamped", range->isClamped()}};
    }
    if (auto const* const choices = dynamic_cast<PiEnumPolicy const*>(policy)) {
        return describeChoices(*choices);
    }
    if (auto const* const state = dynamic_cast<PiSwitchInputPolicy const*>(policy)) {
        return {{"default", state->isOnByDefault()},
                {"animatable", state->isAnimatable()},
                {"inverted", state->isInverted()}};
    }
    if (auto const* const image = dynamic_cast<PiImageInputPolicy const*>(policy)) {
        return {{"primary", image->isPrimary()},
                {"components", image->getComponentCode()},
                {"depths", image->getDepthCode()},
                {"streams", image->getStreamCode()},
                {"reset", static_cast<int>(image->getResetType())},
                {"optional", image->isOptional()}};
    }
    return nullptr;
}

Json describeInput(HostNode const& node, Input const& input, std::string const& prefix)
{
    std::string const fullName = prefix + input.name;
    Json json = {{"name", input.name}, {"fullName", fullName}};
    if (!input.type.has_value()) {
        json["type"] = "structure";
        json["members"] = Json::array();
        for (Input const& member : input.structure.getMembers()) {
            json["members"].push_back(describeInput(node, member, fullName + "."));
        }
        return json;
    }
    json["type"] = nameType(*input.type);
    RCShdPtr<HostValue> const value = node.getValue(fullName);
    if (value.isNull()) {
        json["policy"] = describePolicy(input.policy.get());
    } else {
        // The value knows policies that are not part of the description.
        json["policy"] = describePolicy(value->getPolicy().get());
        json["default"] = valueToJson(*value);
    }
    return json;
}

Json describeDeclaration(HostNode const& node, PiDeclaration const& declaration)
{
    std::string const& name = declaration.input.name;
    switch (declaration.kind) {
    case PiDeclaration::Requires: {
        Json json = {{"declares", "input"}};
        json.update(describeInput(node, declaration.input, ""));
        return json;
    }
    case PiDeclaration::Stores:
        return {{"declares", "stored value"},
                {"name", name},
                {"type", nameStoredType(*declaration.valueType)},
                {"default", valueToJson(*node.getValue(name))}};
    case PiDeclaration::Produces:
        return {
            {"declares", "output"}, {"name", name}, {"type", nameType(*declaration.input.type)}};
    }
    Assertions::throwProgramAborted(__FILE__, __LINE__, "declaration.kind");
}

Json describeImageModifier(PiImageModifierProtocol const& tool)
{
    return {{"canMute", tool.canMute()},
            {"canAffectColour", tool.canAffectColour()},
            {"canAffectAlpha", tool.canAffectAlpha()},
            {"canAffectColourAndAlpha", tool.canAffectColourAndAlpha()},
            {"canBeDisplayModifier", tool.canBeDisplayModifier()},
            {"maskingMode", static_cast<int>(tool.getMaskingMode())}};
}

Json describeTool(PiToolProtocol const& tool)
{
    Json json = {
        {"tool", tool.getShortToolName()},        {"description", tool.getDescription()},
        {"category", tool.getCategory()},         {"product", tool.getProductName()},
        {"manufacturer", tool.getManufacturer()}, {"version", tool.getVersion()},
        {"schema", tool.getSchemaNb()},           {"internal", tool.isInternal()},
        {"superTool", tool.isSuperTool()},        {"primaryInput", tool.getPrimaryInput()}};
    if (auto const* const modifier = dynamic_cast<PiImageModifierProtocol const*>(&tool)) {
        json["imageModifier"] = describeImageModifier(*modifier);
    }
    return json;
}

Json describeBuilds()
{
    Json builds = Json::array();
    for (auto const& build : InBuildInfoUtil::getInfos()) {
        builds.push_back({{"library", build->getLibraryName()},
                          {"productLine", build->getProductLine()},
                          {"version", build->getVersion()},
                          {"majorVersion", build->getMajorVersion()},
                          {"minorVersion", build->getMinorVersion()},
                          {"releaseStage", build->getReleaseStage()},
                          {"releaseCode", build->getReleaseCode()},
                          {"buildNumber", build->getBuildNumber()},
                          {"buildDate", build->getBuildDate()},
                          {"year", build->getYear()},
                          {"configuration", build->getConfiguration()}});
    }
    return builds;
}

} // namespace

std::string formatDescriptionJson(HostNode const& node)
{
    Json json = describeTool(node.getTool());
    json["builds"] = describeBuilds();
    json["declarations"] = Json::array();
    for (PiDeclaration const& declaration : node.getDeclarations()) {
        json["declarations"].push_back(describeDeclaration(node, declaration));
    }
    return json.dump(indentation, ' ', false, Json::error_handler_t::replace) + "\n";
}
