// Tables as text.

#include "remapcolor/commands/LutText.h"

#include "runtime/values/NumberText.h"

namespace {

std::string escapeXml(std::string const& text)
{
    std::string escaped;
    for (char const character : text) {
        switch (character) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '"': escaped += "&quot;"; break;
        default: escaped += character;
        }
    }
    return escaped;
}

void addEntries(std::string& text, LutEntries const& entries)
{
    constexpr std::size_t mostBytes = 48; // of a line, more or less
    text.reserve(text.size() + mostBytes * entries.size());
    for (CoRgbColorTyped<float> const& entry : entries) {
        text += formatNumber(entry.red) + " " + formatNumber(entry.green) + " " +
                formatNumber(entry.blue) + "\n";
    }
}

/// The same number for the three channels.
std::string repeat(float value)
{
    std::string const number = formatNumber(value);
    return number + " " + number + " " + number;
}

} // namespace

std::string formatClf(LutEntries const& entries, std::string const& title,
                      std::vector<std::string> const& remarks, bool areHalves)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<ProcessList compCLFversion=\"3\" id=\"remap-color\" name=\"" +
                       escapeXml(title) + "\">\n";
    for (std::string const& remark : remarks) {
        text += "    <Description>" + escapeXml(remark) + "</Description>\n";
    }
    text += std::string("    <LUT1D inBitDepth=\"16f\" outBitDepth=\"") +
            (areHalves ? "16f" : "32f") +
            "\" halfDomain=\"true\" interpolation=\"linear\">\n"
            "        <Array dim=\"" +
            std::to_string(entries.size()) + " 3\">\n";
    addEntries(text, entries);
    return text + "        </Array>\n    </LUT1D>\n</ProcessList>\n";
}

std::string formatCube(LutEntries const& entries, GeInterval<float> const& domain,
                       std::string const& title, std::vector<std::string> const& remarks)
{
    std::string text;
    for (std::string const& remark : remarks) {
        text += "# " + remark + "\n";
    }
    text += "TITLE \"" + title + "\"\nLUT_1D_SIZE " + std::to_string(entries.size()) +
            "\nDOMAIN_MIN " + repeat(domain.minimum) + "\nDOMAIN_MAX " + repeat(domain.maximum) +
            "\n";
    addEntries(text, entries);
    return text;
}

std::string formatSpi1d(LutEntries const& entries, GeInterval<float> const& domain)
{
    std::string text = "Version 1\nFrom " + formatNumber(domain.minimum) + " " +
                       formatNumber(domain.maximum) + "\nLength " + std::to_string(entries.size()) +
                       "\nComponents 3\n{\n";
    addEntries(text, entries);
    return text + "}\n";
}
