#include "editor/model/document/CommandLine.h"

#include "session/Failures.h"

#include <charconv>

namespace {

CommandLine::Size parseSize(std::string const& text)
{
    constexpr int most = 16384;
    CommandLine::Size size{};
    char const* const end = text.data() + text.size();
    auto const width = std::from_chars(text.data(), end, size.width);
    bool const isPair = width.ec == std::errc() && width.ptr != end && *width.ptr == 'x';
    auto const height = std::from_chars(isPair ? width.ptr + 1 : end, end, size.height);
    bool const isWhole = height.ec == std::errc() && height.ptr == end;
    if (!isWhole || size.width < 1 || size.height < 1 || size.width > most || size.height > most) {
        throw UsageError("--size " + quote(text) + " is no size such as 1280x800");
    }
    return size;
}

/// The words after the program's name, one after the other.
class Words {
public:
    explicit Words(std::vector<std::string> const& all) : words(all) {}

    bool hasMore() const { return place < words.size(); }
    std::string const& take() { return words[place++]; }

    /// What follows an option, as its next word or after "=".
    std::string takeArgument(std::string const& option)
    {
        auto const equals = option.find('=');
        if (equals != std::string::npos) {
            return option.substr(equals + 1);
        }
        if (!hasMore()) {
            throw UsageError(option + " needs an argument; see --help");
        }
        return take();
    }

private:
    std::vector<std::string> const& words;
    std::size_t place = 0;
};

} // namespace

char const* const commandLineHelp =
    "remapcolor-editor [PICTURE] [PROJECT.json] [OPTION]...\n"
    "\n"
    "Remaps the colours of a picture by curves, in a window.\n"
    "\n"
    "  --screenshot FILE.png  save the window as PNG when the picture is shown, and end\n"
    "  --size WIDTHxHEIGHT    of the window\n"
    "  -h, --help             this\n"
    "  --version              the program's version\n"
    "\n"
    "  remapcolor-editor shot.0101.exr look.json\n";

CommandLine parseCommandLine(std::vector<std::string> const& words)
{
    CommandLine line;
    Words rest(words);
    bool isOptionsOver = false;
    while (rest.hasMore()) {
        std::string const& word = rest.take();
        std::string const name = word.substr(0, word.find('='));
        if (isOptionsOver || word.size() < 2 || word.front() != '-') {
            line.files.emplace_back(word);
        } else if (word == "--") {
            isOptionsOver = true;
        } else if (word == "-h" || word == "--help") {
            line.isHelpWanted = true;
        } else if (word == "--version") {
            line.isVersionWanted = true;
        } else if (name == "--screenshot") {
            line.screenshot = rest.takeArgument(word);
        } else if (name == "--size") {
            line.size = parseSize(rest.takeArgument(word));
        } else {
            throw UsageError("there is no option " + quote(word) + "; see --help");
        }
    }
    for (std::filesystem::path const& file : line.files) {
        if (file.empty()) {
            throw UsageError("a file's name is empty; see --help");
        }
    }
    return line;
}
