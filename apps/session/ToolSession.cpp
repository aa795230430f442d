#include "session/ToolSession.h"

#include "base/InInstructionSet.h"
#include "session/Failures.h"
#include "session/ProjectFiles.h"
#include "session/ToolKeys.h"

#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace {

/// Throws UsageError for a wish that the tool, which cannot complain, would pass over.
void checkInstructionSet()
{
    char const* const wanted = std::getenv(inInstructionSetVariable);
    std::string names;
    for (InInstructionSet const set : inAllInstructionSets) {
        if (isInstructionSetAvailable(set)) {
            std::string const name = inInstructionSetNames[static_cast<std::size_t>(set)];
            if (wanted == nullptr || *wanted == '\0' || name == wanted) {
                return;
            }
            names += name + ", ";
        }
    }
    throw UsageError(std::string(inInstructionSetVariable) + " is " + quote(wanted) +
                     ", which is no instruction set of this processor; it takes " + names +
                     "or nothing");
}

} // namespace

ToolSession::ToolSession(std::vector<std::filesystem::path> const& projects)
{
    checkInstructionSet();
    loader.find(ToolKeys::libraryFile);
    graph = makeShared<HostGraph>();
    node = prepareNode(loader.getTool(ToolKeys::tool), projects);
}

RCShdPtr<HostNode> ToolSession::prepareNode(PiToolProtocol const& tool,
                                            std::vector<std::filesystem::path> const& projects)
{
    RCShdPtr<HostNode> created = graph->createNode(tool);
    if (projects.empty()) {
        return created;
    }
    // The new node only says what values there are.
    NodeValues saved;
    for (std::filesystem::path const& project : projects) {
        for (auto& [name, state] : loadProject(project, *created)) {
            saved.insert_or_assign(name, std::move(state));
        }
    }
    graph->removeNode(created);
    return graph->loadNode(tool, saved);
}

RCShdPtr<ControllerLink> ToolSession::linkController()
{
    loader.find(controllerLinkFile);
    auto const panel = makeShared<ControllerPanel>();
    castStrong<PiUserInterface>(node->getController().lock())->createWidgetInstanceData(panel, {});
    if (panel->getLink().isNull()) {
        throw ToolLoadError(std::string(controllerLinkFile) + " does not belong to this tool");
    }
    return panel->getLink();
}

std::filesystem::path ToolSession::getPanelFile() const
{
    constexpr std::string_view folder = "<ToolUiDir>/";
    std::string const name =
        castStrong<PiUserInterface>(node->getController().lock())->getUserInterfaceFile();
    return name.starts_with(folder)
               ? findToolFolder(ToolKeys::libraryFile) / "ui" / name.substr(folder.size())
               : std::filesystem::path(name);
}
