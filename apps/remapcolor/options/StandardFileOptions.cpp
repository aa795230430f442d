#include "remapcolor/options/StandardFileOptions.h"

void checkStandardInput(NodeRequest const& node, NamedFiles files)
{
    for (std::filesystem::path const& project : node.projects) {
        files.emplace_back("--project", project);
    }
    std::string first;
    for (auto const& [option, file] : files) {
        if (!isStandardStream(file)) {
            continue;
        }
        if (!first.empty()) {
            throw UsageError("standard input can be one file only, not " + first + " and " +
                             option + "; name a file for one of them");
        }
        first = option;
    }
}
