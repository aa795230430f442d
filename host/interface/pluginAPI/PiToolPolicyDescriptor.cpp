// How a tool's description is recorded.

#include "pluginAPI/PiToolPolicyDescriptor.h"

#include "base/Assertions.h"

#include <algorithm>

void PiStructuredPolicyDescriptor::add(std::string const& name, PiSocketType const& type,
                                       PiSocketType::Cardinality)
{
    members.push_back({name, type, {}, {}});
}

void PiStructuredPolicyDescriptor::add(std::string const& name, PiSocketType const& type,
                                       RCShdPtr<PiInputPolicy const> const& policy,
                                       PiSocketType::Cardinality)
{
    members.push_back({name, type, policy, {}});
}

void PiStructuredPolicyDescriptor::add(std::string const& name,
                                       PiStructuredPolicyDescriptor const& structure,
                                       PiSocketType::Cardinality)
{
    members.push_back({name, std::nullopt, {}, structure});
}

void PiToolDescriptor::declare(PiDeclaration const& declaration)
{
    bool const isNew =
        std::none_of(declarations.begin(), declarations.end(), [&](PiDeclaration const& earlier) {
            return earlier.input.name == declaration.input.name;
        });
    Assertions::check(isNew, "earlier.input.name != declaration.input.name");
    declarations.push_back(declaration);
}

void PiToolPolicyDescriptor::requires_(std::string const& name, PiSocketType type,
                                       RCShdPtr<PiInputPolicy const> const& policy,
                                       PiSocketType::Cardinality)
{
    declare({PiDeclaration::Requires, {name, type, policy, {}}, std::nullopt});
}

void PiToolPolicyDescriptor::requires_(std::string const& name,
                                       PiStructuredPolicyDescriptor const& structure,
                                       PiSocketType::Cardinality)
{
    declare({PiDeclaration::Requires, {name, std::nullopt, {}, structure}, std::nullopt});
}

void PiToolPolicyDescriptor::stores(std::string const& name, PiValueType type)
{
    declare({PiDeclaration::Stores, {name, std::nullopt, {}, {}}, type});
}

void PiToolPolicyDescriptor::produces(std::string const& name, PiSocketType type)
{
    declare({PiDeclaration::Produces, {name, type, {}, {}}, std::nullopt});
}

Iterator<PiToolPolicyDescriptor::PolicyEntry> PiToolPolicyDescriptor::getPolicies() const
{
    return Iterator<PolicyEntry>(policies);
}

void PiToolPolicyDescriptor::declare(PiDeclaration const& declaration)
{
    if (record != nullptr) {
        record->declare(declaration);
    }
    collectPolicies("", declaration.input);
}

void PiToolPolicyDescriptor::collectPolicies(std::string const& prefix,
                                             PiStructuredPolicyDescriptor::Member const& input)
{
    std::string const fullName = prefix + input.name;
    if (input.policy) {
        policies.emplace_back(fullName, input.policy);
    }
    for (PiStructuredPolicyDescriptor::Member const& member : input.structure.getMembers()) {
        collectPolicies(fullName + ".", member);
    }
}
