#include "runtime/project/Project.h"

#include "files/FileError.h"
#include "files/OrdinaryFile.h"
#include "files/TemporaryFile.h"
#include "runtime/graph/ValueNames.h"
#include "runtime/project/ProjectValues.h"
#include "runtime/values/NearestNames.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <set>
#include <vector>

namespace {

using Json = nlohmann::ordered_json;

constexpr char const* projectFormat = "remap-color-project";
constexpr int projectVersion = 1;

/// The text as JSON; refuses a name that stands twice in one object.
Json parseText(std::string const& text)
{
    std::vector<std::set<std::string>> names;
    auto const refuseRepeats = [&](int, Json::parse_event_t event, Json& parsed) {
        if (event == Json::parse_event_t::object_start) {
            names.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            names.pop_back();
        } else if (event == Json::parse_event_t::key &&
                   !names.back().insert(parsed.get<std::string>()).second) {
            throw ProjectError("the name " + parsed.dump() + " stands there twice");
        }
        return true;
    };
    try {
        return Json::parse(text, refuseRepeats);
    } catch (Json::exception const& error) {
        // The library's text begins with its own error number in brackets.
        std::string const what = error.what();
        auto const bracket = what.find("] ");
        throw ProjectError("it is not valid JSON: " +
                           (bracket == std::string::npos ? what : what.substr(bracket + 2)));
    }
}

template <typename T>
void checkMember(Json const& project, char const* name, T const& wanted)
{
    if (!project.contains(name)) {
        throw ProjectError("\"" + std::string(name) + "\" is missing");
    }
    if (project[name] != Json(wanted)) {
        throw ProjectError("\"" + std::string(name) + "\" is " + project[name].dump() + ", not " +
                           Json(wanted).dump());
    }
}

void checkVersion(Json const& project)
{
    if (project.contains("version") && project["version"].is_number_integer() &&
        project["version"] > projectVersion) {
        throw ProjectError("\"version\" is " + project["version"].dump() +
                           ": this program reads version " + std::to_string(projectVersion) +
                           "; use a newer one");
    }
    checkMember(project, "version", projectVersion);
}

void checkHead(Json const& project, PiToolProtocol const& tool)
{
    if (!project.is_object()) {
        throw ProjectError("it holds no JSON object");
    }
    checkMember(project, "format", projectFormat);
    checkVersion(project);
    checkMember(project, "tool", tool.getShortToolName());
    checkMember(project, "schema", tool.getSchemaNb());
    std::set<std::string> const known = {"format", "version", "tool", "schema", "values"};
    for (auto const& member : project.items()) {
        if (!known.contains(member.key())) {
            throw ProjectError("\"" + member.key() + "\" is not part of a project");
        }
    }
    if (!project.contains("values") || !project["values"].is_object()) {
        throw ProjectError("\"values\" must be an object of names and values");
    }
}

/// `name` is no value of the node.
[[noreturn]] void throwUnknownName(std::string const& name, HostNode const& node)
{
    std::string const text = "\"values\" names \"" + name + "\", which ";
    ValueSlots const members = findValues(node, name);
    if (members.empty()) {
        throw ProjectError(text + "the tool does not have" +
                           suggestNames(name, listValueNames(node),
                                        "a new project of \"remapcolor project\" has all names"));
    }
    std::string const& first = members.front().name;
    throw ProjectError(
        text + (members.size() == 1 ? "is written" : "is a group; name its members, such as") +
        " \"" + first + "\"");
}

struct StreamCloser {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

} // namespace

std::string writeProject(HostNode const& node)
{
    std::vector<std::string> names;
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        names.push_back(slot.name);
    }
    return writeProject(node, names);
}

std::string writeProject(HostNode const& node, std::vector<std::string> const& names)
{
    Json values = Json::object();
    for (std::string const& name : names) {
        values[name] = valueToJson(*node.getValue(name));
    }
    Json const project = {{"format", projectFormat},
                          {"version", projectVersion},
                          {"tool", node.getTool().getShortToolName()},
                          {"schema", node.getTool().getSchemaNb()},
                          {"values", values}};
    constexpr int indentation = 2;
    return project.dump(indentation) + "\n";
}

NodeValues readProject(std::string const& text, HostNode const& pattern)
{
    Json const project = parseText(text);
    checkHead(project, pattern.getTool());
    NodeValues values;
    for (auto const& member : project["values"].items()) {
        RCShdPtr<HostValue> const value = pattern.getValue(member.key());
        if (value.isNull()) {
            throwUnknownName(member.key(), pattern);
        }
        values.emplace(member.key(),
                       valueFromJson(member.value(), *value, "the value \"" + member.key() + "\""));
    }
    return values;
}

void saveTextFile(std::filesystem::path const& file, std::string const& text)
{
    TemporaryFile temporary(file);
    Stream stream(temporary.takeStream());
    errno = 0;
    bool const isWritten = std::fwrite(text.data(), 1, text.size(), stream.get()) == text.size() &&
                           std::fflush(stream.get()) == 0;
    bool const isClosed = std::fclose(stream.release()) == 0;
    if (!isWritten || !isClosed) {
        throw FileError(errno != 0 ? errno : EIO);
    }
    temporary.publish();
}

std::string loadTextFile(std::filesystem::path const& file)
{
    Stream const stream(::fdopen(openOrdinaryFile(file), "rb"));
    std::string text;
    std::array<char, 65536> part{};
    errno = 0;
    while (std::size_t const got = std::fread(part.data(), 1, part.size(), stream.get())) {
        text.append(part.data(), got);
    }
    if (std::ferror(stream.get()) != 0) {
        throw FileError(errno != 0 ? errno : EIO);
    }
    return text;
}
