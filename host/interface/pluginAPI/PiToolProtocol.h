#pragma once

#include "base/OPtr.h"
#include "pluginAPI/PiImageModifierTypes.h"
#include "pluginAPI/PiNodeController.h"
#include "pluginAPI/PiToolPolicyDescriptor.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// A kind of tool: what the host can ask before there is an instance. User-interface thread.
class PiToolProtocol {
public:
    PiToolProtocol() = default;
    PiToolProtocol(PiToolProtocol const&) = delete;
    PiToolProtocol& operator=(PiToolProtocol const&) = delete;
    virtual ~PiToolProtocol();

    virtual std::string getProductName() const = 0;
    virtual std::string getCategory() const = 0;
    virtual std::string getManufacturer() const = 0;
    virtual std::string getVersion() const = 0;
    virtual int getSchemaNb() const = 0;
    virtual std::string getDescription() const = 0;
    virtual bool isInternal() const = 0;
    virtual bool isSuperTool() const = 0;

    /// Name of the primary picture input.
    virtual std::string getPrimaryInput() const = 0;

    /// Declares the tool's inputs, stored values and outputs.
    virtual void describe(PiToolDescriptor& descriptor) const = 0;

    /// A controller for a new instance; the caller owns it.
    virtual OPtrRet<PiNodeController> createController() const = 0;

    /// Whether projects of other schemas may be opened without the tool's help. Our host refuses
    /// them whatever the answer.
    virtual bool allowsAutomaticBackwardComp() const;

    /// The tool's name as users see it.
    virtual std::string getShortToolName() const = 0;

    static std::string getColorCorrectionCategory();
};

/// The part of a tool protocol that is known when it is made.
class PiToolProtocolImp : public virtual PiToolProtocol {
public:
    enum ToolVisibility { Internal = 0, Public = 1 };
    enum ToolStructure { SingleTool = 0, SuperTool = 1 };

    PiToolProtocolImp(std::string toolName, std::string toolCategory, std::string product,
                      std::string maker, std::string toolVersion, int schema,
                      std::string toolDescription, ToolVisibility toolVisibility,
                      ToolStructure toolStructure);

    std::string getProductName() const override { return productName; }
    std::string getCategory() const override { return category; }
    std::string getManufacturer() const override { return manufacturer; }
    std::string getVersion() const override { return version; }
    int getSchemaNb() const override { return schemaNb; }
    std::string getDescription() const override { return description; }
    bool isInternal() const override { return visibility == Internal; }
    bool isSuperTool() const override { return structure == SuperTool; }
    std::string getShortToolName() const override { return name; }

private:
    std::string name;
    std::string category;
    std::string productName;
    std::string manufacturer;
    std::string version;
    int schemaNb;
    std::string description;
    ToolVisibility visibility;
    ToolStructure structure;
};

/// What the host can ask of an image modifier's protocol.
class PiImageModifierProtocol : public virtual PiToolProtocol {
public:
    virtual bool canMute() const = 0;
    virtual bool canAffectColourAndAlpha() const = 0;
    virtual bool canAffectAlpha() const = 0;
    virtual bool canAffectColour() const = 0;
    virtual bool canBeDisplayModifier() const = 0;
    virtual PiImageModifierTypes::MaskingMode getMaskingMode() const = 0;

    /// Throws the assertion failure unless the description has a primary input.
    virtual void checkRequirements() const;
};

/// The tools that plug-ins have registered, in that order.
class PiToolRegistry {
public:
    static PiToolRegistry& getInstance();

    void add(OPtr<PiToolProtocol> protocol);

    /// The tool of that name; null when there is none.
    PiToolProtocol const* find(std::string const& toolName) const;
    std::vector<PiToolProtocol const*> getTools() const;

    /// Lets all but the `count` oldest go: before the library that they come from is unloaded.
    void keepFirst(std::size_t count);

private:
    std::vector<std::unique_ptr<PiToolProtocol>> tools;
};
