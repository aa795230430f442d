#pragma once

#include "pluginAPI/PiNode.h"
#include "runtime/values/HostValue.h"

#include <string>
#include <utility>
#include <vector>

/// An input with a value of its own, with a connection, or (a picture) with neither until the chain
/// is built. User-interface thread, as everything in this file.
class HostInput : public PiInput {
public:
    HostInput(std::string fullName, RCShdPtr<HostValue> inputValue, RCShdPtr<PiOutput> connection)
        : name(std::move(fullName)), value(std::move(inputValue)), connected(std::move(connection))
    {
    }

    std::string getName() const override { return name; }
    RCShdPtr<PiOutput> getConnectedOutput() const override { return connected; }

    /// The value that feeds the input: its own, or that of the connected curve; empty for pictures.
    RCShdPtr<HostValue> const& getValue() const { return value; }

private:
    std::string name;
    RCShdPtr<HostValue> value;
    RCShdPtr<PiOutput> connected;
};

/// An input that consists of inputs.
class HostStructuredInput : public PiStructuredInput {
public:
    using Member = std::pair<std::string, RCShdPtr<PiInput>>;

    HostStructuredInput(std::string fullName, std::vector<Member> inputMembers)
        : name(std::move(fullName)), members(std::move(inputMembers))
    {
    }

    std::string getName() const override { return name; }
    RCShdPtr<PiOutput> getConnectedOutput() const override { return {}; }
    RCShdPtr<PiInput> findMember(std::string const& memberName, bool mustExist) const override;
    std::vector<Member> const& getMembers() const { return members; }

private:
    std::string name;
    std::vector<Member> members;
};

/// Something that was looked up by name and does not exist. The text names it.
class UnknownNameError : public HostException {
public:
    using HostException::HostException;
};
