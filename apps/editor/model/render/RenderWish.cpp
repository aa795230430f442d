#include "editor/model/render/RenderWish.h"

#include "runtime/values/NumberText.h"
#include "shots/FrameName.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr char const* addedToNames = "_remap";

std::filesystem::path getFolder()
{
    std::error_code ignored; // a folder that is gone makes the name one that is not there
    return std::filesystem::current_path(ignored);
}

std::string makeAbsolutePattern(std::string const& pattern)
{
    bool const isAbsolute = pattern.empty() || std::filesystem::path(pattern).is_absolute();
    return isAbsolute ? pattern : escapePattern(getFolder().string()) + "/" + pattern;
}

} // namespace

std::vector<std::string> makeRenderWords(RenderWish const& wish,
                                         std::filesystem::path const& project)
{
    std::vector<std::string> words = {
        "render", makeAbsolutePattern(wish.input),
        "-o",     makeAbsolutePattern(wish.output),
        "-p",     (project.is_absolute() ? project : getFolder() / project).string()};
    auto const add = [&words](std::string const& option, std::string const& value) {
        if (!value.empty()) {
            words.push_back(option + "=" + value);
        }
    };
    add("--frames", wish.frames);
    add("--frame", wish.time.has_value() ? formatNumber(*wish.time) : "");
    add("--existing", wish.existing);
    add("--on-missing", wish.missing);
    add("--depth", wish.depth);
    add("--compression", wish.compression);
    return words;
}

std::string suggestOutput(std::string const& input)
{
    std::size_t const slash = input.rfind('/');
    std::size_t const name = slash == std::string::npos ? 0 : slash + 1;
    // Before the frame's number or the extension, and the character that sets it off.
    std::size_t const dot = input.rfind('.');
    std::size_t place = std::min({input.find_first_of("#@%", name), input.size(),
                                  dot == std::string::npos || dot < name ? input.size() : dot});
    bool const isSetOff =
        place > name && std::string_view("._- ").find(input[place - 1]) != std::string_view::npos;
    place -= isSetOff ? 1 : 0;
    return input.substr(0, std::max(place, name)) + addedToNames +
           input.substr(std::max(place, name));
}
