// The tool as a table.

#include "remapcolor/commands/DescriptionTable.h"

#include "base/Assertions.h"
#include "remapcolor/text/ValueText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace {

using Input = PiStructuredPolicyDescriptor::Member;

enum Column { Name, Type, Takes, Default, Keyframes, nbColumns };

using Row = std::array<std::string, nbColumns>;

Row const titles = {"NAME", "TYPE", "TAKES", "DEFAULT", "KEYFRAMES"};

/// A list of rows whose columns are as wide as their widest text.
class Table {
public:
    void add(Row row) { rows.push_back(std::move(row)); }

    std::string format() const
    {
        std::array<std::size_t, nbColumns> widths{};
        for (Row const& row : rows) {
            for (std::size_t column = 0; column < nbColumns; ++column) {
                widths[column] = std::max(widths[column], row[column].size());
            }
        }
        std::string text;
        for (Row const& row : rows) {
            std::string line;
            for (std::size_t column = 0; column < nbColumns; ++column) {
                line += "  " + row[column] + std::string(widths[column] - row[column].size(), ' ');
            }
            line.erase(line.find_last_not_of(' ') + 1);
            text += line + "\n";
        }
        return text;
    }

private:
    std::vector<Row> rows;
};

char const* showType(PiSocketType const& type)
{
    switch (type.getCode()) {
    case PiSocketType::Switch: return "switch";
    case PiSocketType::Double: return "number";
    case PiSocketType::IntegerEnumeration: return "choice";
    case PiSocketType::Image: return "picture";
    case PiSocketType::Curve: return "curve";
    }
    Assertions::throwProgramAborted(__FILE__, __LINE__, "type.getCode()");
}

std::pair<std::string, std::string> showStoredType(PiValueType const& type)
{
    switch (type.getCode()) {
    case PiValueType::Boolean: return {"switch", "true, false"};
    case PiValueType::Double: return {"number", describeRange(nullptr)};
    case PiValueType::Integer: return {"integer", "any whole number"};
    case PiValueType::DoubleArray: return {"numbers", "number,number,..."};
    }
    Assertions::throwProgramAborted(__FILE__, __LINE__, "type.getCode()");
}

/// What an input takes, on as many lines as it has choices.
std::vector<std::string> describeTaken(PiSocketType const& type, PiInputPolicy const* policy)
{
    switch (type.getCode()) {
    case PiSocketType::Switch: return {"true, false"};
    case PiSocketType::Double: return {describeRange(policy)};
    case PiSocketType::Image: return {"a picture"};
    case PiSocketType::Curve: return {"x,y x,y ... from left to right"};
    case PiSocketType::IntegerEnumeration: break;
    }
    std::vector<std::string> lines;
    if (auto const* const choices = dynamic_cast<PiEnumPolicy const*>(policy)) {
        for (PiEnumPolicy::Pair const& choice : choices->getPairs()) {
            lines.push_back(formatChoice(choice));
        }
    }
    return lines.empty() ? std::vector<std::string>{"any whole number"} : lines;
}

/// Whether the host takes keyframes: only choices can forbid them.
bool isAnimatable(PiInputPolicy const* policy)
{
    auto const* const choices = dynamic_cast<PiEnumPolicy const*>(policy);
    return choices == nullptr || choices->isAnimatable();
}

/// An input that has a value or takes a picture.
void addPlainInput(Table& table, HostNode const& node, std::string const& fullName,
                   std::string const& shownName, PiSocketType const& type)
{
    RCShdPtr<HostValue> const value = node.getValue(fullName);
    if (value.isNull()) {
        table.add({shownName, showType(type), "a picture", "", ""});
        return;
    }
    // The value knows policies that are not part of the description.
    PiInputPolicy const* const policy = value->getPolicy().get();
    std::vector<std::string> const taken = describeTaken(type, policy);
    table.add({shownName, showType(type), taken.front(), formatValue(*value),
               isAnimatable(policy) ? "yes" : "no"});
    for (std::size_t line = 1; line < taken.size(); ++line) {
        table.add({"", "", taken[line], "", ""});
    }
}

/// One input, or a structure with its members below it.
void addInput(Table& table, HostNode const& node, Input const& input, std::string const& prefix,
              std::size_t depth)
{
    constexpr std::size_t indentation = 2;
    std::string const fullName = prefix + input.name;
    std::string const shownName = std::string(indentation * depth, ' ') + fullName;
    if (input.type.has_value()) {
        addPlainInput(table, node, fullName, shownName, *input.type);
        return;
    }
    table.add({shownName, "group", "", "", ""});
    for (Input const& member : input.structure.getMembers()) {
        addInput(table, node, member, fullName + ".", depth + 1);
    }
}

void addStored(Table& table, HostNode const& node, PiDeclaration const& declaration)
{
    auto const [type, taken] = showStoredType(*declaration.valueType);
    std::string const& name = declaration.input.name;
    table.add({name, type, taken, formatValue(*node.getValue(name)), ""});
}

std::string formatTool(PiToolProtocol const& tool)
{
    std::array<std::pair<char const*, std::string>, 5> const lines = {{
        {"category", tool.getCategory()},
        {"product", tool.getProductName()},
        {"manufacturer", tool.getManufacturer()},
        {"version", tool.getVersion()},
        {"schema", std::to_string(tool.getSchemaNb())},
    }};
    constexpr std::size_t labelWidth = 14;
    std::string text = tool.getShortToolName() + ": " + tool.getDescription() + "\n\n";
    for (auto const& [label, value] : lines) {
        std::string const shown = label;
        text += "  " + shown + std::string(labelWidth - shown.size(), ' ') + value + "\n";
    }
    return text;
}

} // namespace

std::string formatDescription(HostNode const& node)
{
    Table inputs;
    Table stored;
    Table outputs;
    inputs.add(titles);
    for (PiDeclaration const& declaration : node.getDeclarations()) {
        switch (declaration.kind) {
        case PiDeclaration::Requires: addInput(inputs, node, declaration.input, "", 0); break;
        case PiDeclaration::Stores: addStored(stored, node, declaration); break;
        case PiDeclaration::Produces:
            outputs.add({declaration.input.name, showType(*declaration.input.type), "", "", ""});
            break;
        }
    }
    return formatTool(node.getTool()) +
           "\nInputs, for --set NAME=VALUE; a group's name sets all its members\n" +
           inputs.format() + "\nValues that are stored with the node, also for --set\n" +
           stored.format() + "\nOutputs\n" + outputs.format();
}
