#pragma once

#include "base/Iterator.h"
#include "pluginAPI/PiImageModifier.h"
#include "pluginAPI/PiToolProtocol.h"

#include <string>

/// The protocol of a tool that is described by policies. A tool specialises `describe` for its
/// controller. The description runs once, the first time that something of it is wanted.
template <typename Controller, typename Descriptor>
class PiToolPolicyProtocol : public PiToolInterfaceManip, public virtual PiToolProtocol {
public:
    /// The tool's description: each tool's own.
    virtual void describe(Descriptor& descriptor) const;

    /// Keeps what later questions need of a finished description.
    virtual void copyFromDescriptor(Descriptor& descriptor) const
    {
        primaryInput = descriptor.getPrimaryInput();
        policies = descriptor.getPolicies();
    }

    /// Applies the description's policies to a new controller.
    virtual void initializeController(Controller& controller) const
    {
        Iterator<PiToolPolicyDescriptor::PolicyEntry> entries = policies;
        for (entries.toStart(); !entries.isAtEnd(); entries.next()) {
            addInputPolicy(controller, entries.get().getName(), entries.get().getPtr());
        }
    }

    std::string getPrimaryInput() const override
    {
        ensureDescribed();
        return primaryInput;
    }

    void describe(PiToolDescriptor& hostRecord) const override
    {
        Descriptor descriptor(&hostRecord);
        describe(descriptor);
        if (!policies.isSet()) {
            keep(descriptor);
        }
    }

    OPtrRet<PiNodeController> createController() const override
    {
        ensureDescribed();
        OPtr<Controller> controller(new Controller);
        initializeController(*controller);
        return OPtrRet<PiNodeController>(controller.release());
    }

protected:
    void ensureDescribed() const
    {
        if (!policies.isSet()) {
            Descriptor descriptor(nullptr);
            describe(descriptor);
            keep(descriptor);
        }
    }

private:
    /// A description that is refused leaves the tool undescribed: the next question fails too.
    void keep(Descriptor& descriptor) const
    {
        try {
            copyFromDescriptor(descriptor);
        } catch (...) {
            policies = {};
            throw;
        }
    }

    mutable std::string primaryInput;
    mutable Iterator<PiToolPolicyDescriptor::PolicyEntry> policies;
};

/// The protocol of an image modifier: adds to its description what every image modifier has.
template <typename Controller>
class PiImageModifierInfo : public PiToolProtocolImp,
                            public PiImageModifierProtocol,
                            public PiToolPolicyProtocol<Controller, PiImageModifier::Descriptor> {
    using PolicyProtocol = PiToolPolicyProtocol<Controller, PiImageModifier::Descriptor>;

public:
    using PiToolProtocolImp::PiToolProtocolImp;
    using PolicyProtocol::describe;

    void describe(PiImageModifier::Descriptor& descriptor) const override
    {
        descriptor.stores(PiImageModifier::getMuteValueName(), PiValueType::Boolean);
        descriptor.stores(PiImageModifier::getAffectValueName(), PiValueType::Integer);
        descriptor.produces(PiImageModifier::getOutputName(), PiSocketType::Image);
        PolicyProtocol::describe(descriptor);
        PiImageModifier::describeMasking(descriptor);
    }

    void copyFromDescriptor(PiImageModifier::Descriptor& descriptor) const override
    {
        PolicyProtocol::copyFromDescriptor(descriptor);
        mutes = descriptor.canMute();
        affectsColourAndAlpha = descriptor.canAffect(PiImageModifierTypes::AffectColourAndAlpha);
        affectsAlpha = descriptor.canAffect(PiImageModifierTypes::AffectAlpha);
        affectsColour = descriptor.canAffect(PiImageModifierTypes::AffectColour);
        modifiesDisplay = descriptor.canBeDisplayModifier();
        maskingMode = descriptor.getMaskingMode();
        this->checkRequirements();
    }

    void initializeController(Controller& controller) const override
    {
        PolicyProtocol::initializeController(controller);
        if (maskingMode != PiImageModifierTypes::NoMasking) {
            controller.addMaskingInputPolicies();
        }
    }

    bool canMute() const override { return answer(mutes); }
    bool canAffectColourAndAlpha() const override { return answer(affectsColourAndAlpha); }
    bool canAffectAlpha() const override { return answer(affectsAlpha); }
    bool canAffectColour() const override { return answer(affectsColour); }
    bool canBeDisplayModifier() const override { return answer(modifiesDisplay); }
    PiImageModifierTypes::MaskingMode getMaskingMode() const override
    {
        return answer(maskingMode);
    }

private:
    /// `field` once the description has run.
    template <typename T>
    T answer(T const& field) const
    {
        this->ensureDescribed();
        return field;
    }

    mutable bool mutes = false;
    mutable bool affectsColourAndAlpha = false;
    mutable bool affectsAlpha = false;
    mutable bool affectsColour = false;
    mutable bool modifiesDisplay = false;
    mutable PiImageModifierTypes::MaskingMode maskingMode = PiImageModifierTypes::NoMasking;
};
