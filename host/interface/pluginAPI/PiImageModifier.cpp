// What every image modifier shares, and the registry of tools.

#include "pluginAPI/PiImageModifier.h"

#include "base/Assertions.h"
#include "pluginAPI/PiToolProtocol.h"

#include <algorithm>
#include <utility>

RCShdPtr<PiInputPolicy const> PiToolInterface::getInputPolicy(std::string const& inputName) const
{
    auto const found = inputPolicies.find(inputName);
    return found == inputPolicies.end() ? RCShdPtr<PiInputPolicy const>() : found->second;
}

void PiToolInterfaceManip::addInputPolicy(PiToolInterface& tool, std::string const& inputName,
                                          RCShdPtr<PiInputPolicy const> const& policy)
{
    tool.inputPolicies[inputName] = policy;
}

bool PiImageModifier::Descriptor::canAffect(PiImageModifierTypes::AffectType type) const
{
    return affect == PiImageModifierTypes::AffectColourAndAlpha || affect == type;
}

PiImageModifier::PiImageModifier(std::string panelFile) : PiUserInterface(std::move(panelFile)) {}

void PiImageModifier::reset()
{
    getNode()->resetInputs();
}

std::string PiImageModifier::getMuteValueName()
{
    return "Mute";
}

std::string PiImageModifier::getAffectValueName()
{
    return "Affect";
}

std::string PiImageModifier::getOutputName()
{
    return "Output";
}

std::string PiImageModifier::getImageInputName()
{
    return "Input";
}

std::string PiImageModifier::getMaskInputName()
{
    return "Mask";
}

std::string PiImageModifier::getMixInputName()
{
    return "Mix";
}

void PiImageModifier::addSingleImageInput(Descriptor& descriptor,
                                          RCShdPtr<PiInputPolicy const> const& policy,
                                          PiSocketType::Cardinality cardinality)
{
    descriptor.requires_(getImageInputName(), PiSocketType::Image, policy, cardinality);
    descriptor.setPrimaryInput(getImageInputName());
}

void PiImageModifier::describeMasking(Descriptor& descriptor)
{
    descriptor.requires_(getMaskInputName(), PiSocketType::Image, {}, PiSocketType::Single);
    descriptor.requires_(getMixInputName(), PiSocketType::Double, {}, PiSocketType::Single);
    descriptor.maskingMode = PiImageModifierTypes::MaskAfterChain;
}

void PiImageModifier::addMaskingInputPolicies()
{
    struct Manip : PiToolInterfaceManip {
        using PiToolInterfaceManip::addInputPolicy;
    };
    Manip::addInputPolicy(*this, getMixInputName(),
                          PiRangeInputPolicy<double>::create(0.0, 1.0, 1.0, true, true));
}

void PiImageModifier::registerTool(OPtr<PiToolProtocol> protocol)
{
    PiToolRegistry::getInstance().add(std::move(protocol));
}

PiToolProtocol::~PiToolProtocol() = default;

bool PiToolProtocol::allowsAutomaticBackwardComp() const
{
    return false;
}

std::string PiToolProtocol::getColorCorrectionCategory()
{
    return "Color Correction";
}

PiToolProtocolImp::PiToolProtocolImp(std::string toolName, std::string toolCategory,
                                     std::string product, std::string maker,
                                     std::string toolVersion, int schema,
                                     std::string toolDescription, ToolVisibility toolVisibility,
                                     ToolStructure toolStructure)
    : name(std::move(toolName)), category(std::move(toolCategory)), productName(std::move(product)),
      manufacturer(std::move(maker)), version(std::move(toolVersion)), schemaNb(schema),
      description(std::move(toolDescription)), visibility(toolVisibility), structure(toolStructure)
{
}

void PiImageModifierProtocol::checkRequirements() const
{
    Assertions::check(!getPrimaryInput().empty(), "!getPrimaryInput().empty()");
}

PiToolRegistry& PiToolRegistry::getInstance()
{
    static PiToolRegistry registry;
    return registry;
}

void PiToolRegistry::add(OPtr<PiToolProtocol> protocol)
{
    Assertions::check(find(protocol->getShortToolName()) == nullptr,
                      "find(protocol->getShortToolName()) == nullptr");
    tools.emplace_back(protocol.release());
}

PiToolProtocol const* PiToolRegistry::find(std::string const& toolName) const
{
    for (auto const& tool : tools) {
        if (tool->getShortToolName() == toolName) {
            return tool.get();
        }
    }
    return nullptr;
}

void PiToolRegistry::keepFirst(std::size_t count)
{
    tools.resize(std::min(count, tools.size()));
}

std::vector<PiToolProtocol const*> PiToolRegistry::getTools() const
{
    std::vector<PiToolProtocol const*> all;
    for (auto const& tool : tools) {
        all.push_back(tool.get());
    }
    return all;
}
