#include "runtime/project/Project.h"

#include "runtime/project/ProjectValues.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>
#include <unistd.h>
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

[[noreturn]] void failSystem(std::filesystem::path const& file)
{
    throw std::system_error(errno, std::generic_category(), file.string());
}

/// Where a chain of symbolic links ends, whether there is a file or not.
std::filesystem::path followLinks(std::filesystem::path file)
{
    constexpr int mostLinks = 40; // the system's own limit
    for (int link = 0; std::filesystem::is_symlink(file); ++link) {
        if (link == mostLinks) {
            throw std::system_error(std::make_error_code(std::errc::too_many_symbolic_link_levels),
                                    file.string());
        }
        file = file.parent_path() / std::filesystem::read_symlink(file);
    }
    return file;
}

/// Removes a file unless it is kept.
class TemporaryText {
public:
    explicit TemporaryText(std::filesystem::path const& target)
        : file(target.parent_path() /
               ("." + target.filename().string() + "." + std::to_string(getpid()) + ".tmp"))
    {
    }
    TemporaryText(TemporaryText const&) = delete;
    TemporaryText& operator=(TemporaryText const&) = delete;
    ~TemporaryText()
    {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
    }

    std::filesystem::path const& getFile() const { return file; }

private:
    std::filesystem::path file;
};

} // namespace

std::string writeProject(HostNode const& node)
{
    Json values = Json::object();
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        values[slot.name] = valueToJson(*slot.value);
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
            throw ProjectError("\"values\" names \"" + member.key() +
                               "\", which the tool does not have");
        }
        values.emplace(member.key(),
                       valueFromJson(member.value(), *value, "the value \"" + member.key() + "\""));
    }
    return values;
}

void saveTextFile(std::filesystem::path const& file, std::string const& text)
{
    std::filesystem::path const target = followLinks(file);
    TemporaryText const temporary(target);
    errno = 0;
    std::ofstream stream(temporary.getFile(), std::ios::binary);
    stream << text;
    stream.close();
    if (!stream) {
        failSystem(file);
    }
    std::filesystem::rename(temporary.getFile(), target);
}

std::string loadTextFile(std::filesystem::path const& file)
{
    if (std::filesystem::is_directory(file)) {
        throw std::system_error(std::make_error_code(std::errc::is_a_directory), file.string());
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!stream.is_open() || stream.bad()) {
        failSystem(file);
    }
    return text;
}
