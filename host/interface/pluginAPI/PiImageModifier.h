#pragma once

#include "base/OPtr.h"
#include "pluginAPI/PiImageModifierTypes.h"
#include "pluginAPI/PiToolInterface.h"
#include "pluginAPI/PiToolPolicyDescriptor.h"
#include "pluginAPI/PiUserInterface.h"

#include <string>

class PiToolProtocol;

/// How a tool's connections may change. Our host connects what it needs by itself.
class PiToolTopologyInterface {};

/// How a tool shows in a schematic view. Our host has none.
class PiSchematicInterface {};

/// What a tool leads to besides its picture. Our host knows nothing else.
class PiOutcomeInterface {};

/// The controller of a tool that makes one picture from one picture. User-interface thread.
class PiImageModifier : public PiToolInterface,
                        public PiToolTopologyInterface,
                        public PiUserInterface,
                        public PiSchematicInterface,
                        public PiOutcomeInterface {
public:
    /// Through which an image modifier describes itself.
    class Descriptor : public PiToolPolicyDescriptor {
    public:
        /// `hostRecord` may be null.
        explicit Descriptor(PiToolDescriptor* hostRecord) : PiToolPolicyDescriptor(hostRecord) {}

        /// What of a pixel the tool may change.
        void setAffect(PiImageModifierTypes::AffectType type) { affect = type; }

        bool canMute() const { return true; }

        /// A tool that affects colour and alpha can be limited to either.
        bool canAffect(PiImageModifierTypes::AffectType type) const;
        bool canBeDisplayModifier() const { return false; }
        PiImageModifierTypes::MaskingMode getMaskingMode() const { return maskingMode; }

    private:
        friend class PiImageModifier;

        PiImageModifierTypes::AffectType affect = PiImageModifierTypes::AffectColourAndAlpha;
        PiImageModifierTypes::MaskingMode maskingMode = PiImageModifierTypes::NoMasking;
    };

    explicit PiImageModifier(std::string panelFile);

    /// Resets the tool's own inputs, mute and affect.
    void reset() override;

    /// Names of what every image modifier has. Any thread.
    static std::string getMuteValueName();
    static std::string getAffectValueName();
    static std::string getOutputName();
    static std::string getImageInputName();
    static std::string getMaskInputName();
    static std::string getMixInputName();

    /// Declares the one picture input, which becomes the primary input.
    static void addSingleImageInput(Descriptor& descriptor,
                                    RCShdPtr<PiInputPolicy const> const& policy,
                                    PiSocketType::Cardinality cardinality);

    /// Declares the optional picture "Mask" and the number "Mix" by which the host blends source
    /// and result after the chain.
    static void describeMasking(Descriptor& descriptor);

    /// Applies the policies of the inputs that describeMasking declares.
    void addMaskingInputPolicies();

    /// Hands the tool to the host, which keeps it. Throws the assertion failure if a tool of that
    /// name is registered already.
    static void registerTool(OPtr<PiToolProtocol> protocol);
};
