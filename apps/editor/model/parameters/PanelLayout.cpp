#include "editor/model/parameters/PanelLayout.h"

#include "files/PrintableText.h"
#include "session/Failures.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <pugixml.hpp>
#include <string_view>

namespace {

[[noreturn]] void failFor(std::filesystem::path const& file, std::string const& reason)
{
    throw PanelLayoutError("cannot lay the parameters out by " + quoteFile(file) + ": " + reason);
}

/// Reads one file and knows what to say about it.
class LayoutReader {
public:
    explicit LayoutReader(std::filesystem::path const& layoutFile) : file(layoutFile) {}

    PanelLayout read()
    {
        pugi::xml_document document;
        pugi::xml_parse_result const parsed = document.load_file(file.c_str());
        if (parsed.status == pugi::status_file_not_found) {
            fail("there is no such file");
        } else if (!parsed) {
            fail(std::string(parsed.description()) + ", at byte " + std::to_string(parsed.offset));
        }
        pugi::xml_node const panel = document.document_element();
        if (std::strcmp(panel.name(), "panel") != 0) {
            fail("it lays out no panel");
        }
        for (pugi::xml_node const child : panel.children()) {
            if (isElement(child, "group")) {
                checkAttributes(child, {"label"});
                for (pugi::xml_node const row : child.children()) {
                    addRow(row, child.attribute("label").value());
                }
            } else {
                addRow(child, {});
            }
        }
        return layout;
    }

private:
    [[noreturn]] void fail(std::string const& reason) const { failFor(file, reason); }

    static bool isElement(pugi::xml_node const& node, char const* name)
    {
        return node.type() == pugi::node_element && std::strcmp(node.name(), name) == 0;
    }

    void checkAttributes(pugi::xml_node const& node,
                         std::initializer_list<std::string_view> known) const
    {
        for (pugi::xml_attribute const attribute : node.attributes()) {
            if (std::find(known.begin(), known.end(), attribute.name()) == known.end()) {
                fail("a " + std::string(node.name()) + " has no attribute " +
                     quote(attribute.name()));
            }
        }
    }

    void addRow(pugi::xml_node const& node, std::string const& group)
    {
        if (node.type() != pugi::node_element) {
            return; // a comment
        }
        if (!isElement(node, "row")) {
            fail("there is no element " + quote(node.name()) + " in a panel");
        }
        checkAttributes(node, {"value", "label", "step", "from", "to"});
        PanelEntry entry;
        entry.value = node.attribute("value").value();
        entry.group = group;
        entry.label = node.attribute("label").value();
        bool const isTwice =
            std::any_of(layout.begin(), layout.end(),
                        [&](PanelEntry const& other) { return other.value == entry.value; });
        if (entry.value.empty() || isTwice) {
            fail(entry.value.empty() ? std::string("a row has no value")
                                     : quote(entry.value) + " has two rows");
        }
        if (std::optional<double> const step = readNumber(node, "step")) {
            entry.step = *step;
            if (entry.step <= 0.0) {
                fail("the step of " + quote(entry.value) + " is not above 0");
            }
        }
        entry.slider = readSlider(node);
        layout.push_back(std::move(entry));
    }

    std::optional<SliderRange> readSlider(pugi::xml_node const& node) const
    {
        std::optional<double> const from = readNumber(node, "from");
        std::optional<double> const to = readNumber(node, "to");
        if (from.has_value() != to.has_value() || (from.has_value() && !(*from < *to))) {
            fail("the slider of " + quote(node.attribute("value").value()) +
                 " needs \"from\" and a greater \"to\"");
        }
        return from.has_value() ? std::optional(SliderRange{*from, *to}) : std::nullopt;
    }

    std::optional<double> readNumber(pugi::xml_node const& node, char const* name) const
    {
        pugi::xml_attribute const attribute = node.attribute(name);
        if (!attribute) {
            return std::nullopt;
        }
        std::string_view const text = attribute.value();
        double number = 0.0;
        auto const result = std::from_chars(text.data(), text.data() + text.size(), number);
        if (result.ec != std::errc() || result.ptr != text.data() + text.size() ||
            !std::isfinite(number)) {
            fail(quote(std::string(text)) + " is no number for \"" + name + "\" of " +
                 quote(node.attribute("value").value()));
        }
        return number;
    }

    std::filesystem::path const& file;
    PanelLayout layout;
};

} // namespace

PanelLayout loadPanelLayout(std::filesystem::path const& file)
{
    return LayoutReader(file).read();
}

std::vector<ParameterRow> arrangeRows(std::vector<ParameterRow> const& rows,
                                      PanelLayout const& layout, std::filesystem::path const& file)
{
    std::vector<ParameterRow> arranged;
    std::vector<ParameterRow> rest = rows;
    for (PanelEntry const& entry : layout) {
        auto const found =
            std::find_if(rest.begin(), rest.end(), [&](ParameterRow const& candidate) {
                return candidate.name == entry.value;
            });
        if (found == rest.end()) {
            failFor(file, "the tool has no value " + quote(entry.value));
        }
        ParameterRow row = *found;
        rest.erase(found);
        row.group = entry.group;
        row.label = entry.label.empty() ? row.label : entry.label;
        row.step = entry.step > 0.0 ? entry.step : row.step;
        row.slider = entry.slider;
        arranged.push_back(std::move(row));
    }
    arranged.insert(arranged.end(), rest.begin(), rest.end());
    return arranged;
}

std::vector<ParameterRow> listParameters(Document const& document)
{
    ControllerLink const& link = document.getLink();
    return makeParameterRows(document.getNode(), {link.getModeName(ControllerLink::Linear),
                                                  link.getModeName(ControllerLink::ExrDisplay)});
}

std::vector<ParameterRow> layOutParameters(Document const& document)
{
    std::filesystem::path const file = document.getPanelFile();
    return arrangeRows(listParameters(document), loadPanelLayout(file), file);
}
