#pragma once

#include "editor/model/document/Document.h"
#include "editor/model/parameters/ParameterRows.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

/// A layout that cannot be used; the text says which file and why.
class PanelLayoutError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a panel's file says about one row.
struct PanelEntry {
    std::string value{}; ///< name of a value, or of a structure of one per channel
    std::string group{}; ///< the heading that it stands under; empty for none
    std::string label{};
    double step = 0.0;                   ///< 0 for the usual one
    std::optional<SliderRange> slider{}; ///< as far as a slider goes
};
using PanelLayout = std::vector<PanelEntry>;

/// Reads a tool's panel. Throws PanelLayoutError for a file that is missing, no layout, or says
/// what a layout cannot say.
PanelLayout loadPanelLayout(std::filesystem::path const& file);

/// The rows in the layout's order and with what it says of them; what it doesn't name follows as it
/// was. Throws PanelLayoutError, naming `file`, for a value that no row has.
std::vector<ParameterRow> arrangeRows(std::vector<ParameterRow> const& rows,
                                      PanelLayout const& layout, std::filesystem::path const& file);

/// The parameters of the document's node as its tool declares them.
std::vector<ParameterRow> listParameters(Document const& document);

/// The same as the tool's panel has them. Throws PanelLayoutError.
std::vector<ParameterRow> layOutParameters(Document const& document);
