#pragma once

#include "base/Iterator.h"
#include "base/RCShdPtr.h"
#include "pluginAPI/PiInputPolicy.h"
#include "pluginAPI/PiSocketType.h"

#include <optional>
#include <string>
#include <vector>

/// The members of a structured input, in the order in which they were added.
class PiStructuredPolicyDescriptor {
public:
    struct Member;

    void add(std::string const& name, PiSocketType const& type, PiSocketType::Cardinality);
    void add(std::string const& name, PiSocketType const& type,
             RCShdPtr<PiInputPolicy const> const& policy, PiSocketType::Cardinality);
    void add(std::string const& name, PiStructuredPolicyDescriptor const& structure,
             PiSocketType::Cardinality);

    std::vector<Member> const& getMembers() const { return members; }

private:
    std::vector<Member> members;
};

struct PiStructuredPolicyDescriptor::Member {
    std::string name;
    std::optional<PiSocketType> type; ///< empty for a structure
    RCShdPtr<PiInputPolicy const> policy;
    PiStructuredPolicyDescriptor structure;
};

/// One line of a tool's description, as the host keeps it.
struct PiDeclaration {
    enum Kind { Requires, Stores, Produces };

    Kind kind;
    PiStructuredPolicyDescriptor::Member input; ///< name and, unless stored, type and members
    std::optional<PiValueType> valueType;       ///< of a stored value
};

/// The host's record of a tool's description: every declaration in the tool's order. Declaring a
/// name twice throws the assertion failure.
class PiToolDescriptor {
public:
    void declare(PiDeclaration const& declaration);
    std::vector<PiDeclaration> const& getDeclarations() const { return declarations; }

private:
    std::vector<PiDeclaration> declarations;
};

/// Through which a tool describes itself. Passes declarations on to the host's record, if there is
/// one, and collects the policies under the inputs' full names. User-interface thread.
class PiToolPolicyDescriptor {
public:
    /// An input's full name and its policy.
    class PolicyEntry {
    public:
        PolicyEntry(std::string inputName, RCShdPtr<PiInputPolicy const> const& inputPolicy)
            : name(std::move(inputName)), policy(inputPolicy)
        {
        }
        std::string const& getName() const { return name; }
        RCShdPtr<PiInputPolicy const> const& getPtr() const { return policy; }

    private:
        std::string name;
        RCShdPtr<PiInputPolicy const> policy;
    };

    /// `hostRecord` may be null.
    explicit PiToolPolicyDescriptor(PiToolDescriptor* hostRecord) : record(hostRecord) {}

    /// Declares an input.
    // NOLINTNEXTLINE(readability-identifier-naming): the plain word is a keyword
    void requires_(std::string const& name, PiSocketType type,
                   RCShdPtr<PiInputPolicy const> const& policy, PiSocketType::Cardinality);
    // NOLINTNEXTLINE(readability-identifier-naming): the plain word is a keyword
    void requires_(std::string const& name, PiStructuredPolicyDescriptor const& structure,
                   PiSocketType::Cardinality);

    /// Declares a value that is saved with the node and has no socket.
    void stores(std::string const& name, PiValueType type);

    /// Declares an output.
    void produces(std::string const& name, PiSocketType type);

    /// Name of the primary picture input; empty until one is declared.
    std::string const& getPrimaryInput() const { return primaryInput; }
    void setPrimaryInput(std::string const& name) { primaryInput = name; }

    /// The policies declared so far, in order.
    Iterator<PolicyEntry> getPolicies() const;

private:
    void declare(PiDeclaration const& declaration);
    void collectPolicies(std::string const& prefix, PiStructuredPolicyDescriptor::Member const&);

    PiToolDescriptor* record;
    std::string primaryInput;
    std::vector<PolicyEntry> policies;
};
