// --frame: which moment of keyframed values a picture gets.

#include "remapcolor/options/FrameOption.h"

#include "remapcolor/options/CommandOptions.h"
#include "runtime/values/NumberText.h"
#include "session/Failures.h"

#include <charconv>
#include <string_view>

namespace {

constexpr std::string_view digits = "0123456789";

double parseFrame(std::string const& text)
{
    std::optional<double> const frame = parseNumber(text);
    if (!frame.has_value()) {
        throw UsageError("--frame takes a number such as 12, -3 or 0.5, not " + quote(text));
    }
    return *frame;
}

/// Tells whether a value is another at another time.
struct ChangesOverTime {
    template <typename T>
    bool operator()(Animated<T> const& animated) const
    {
        return !animated.isConstant();
    }
    bool operator()(Vector<double> const&) const { return false; }
};

std::string_view dropExtension(std::string_view name)
{
    std::size_t const dot = name.rfind('.');
    bool const isNumber = dot != std::string_view::npos && dot + 1 < name.size() &&
                          name.find_first_not_of(digits, dot + 1) == std::string_view::npos;
    return isNumber ? name : name.substr(0, dot);
}

/// A minus sign stands at the name's start or after a separator; between words it is a hyphen.
bool hasMinus(std::string_view name, std::size_t first)
{
    return first > 0 && name[first - 1] == '-' &&
           (first == 1 || name[first - 2] == '.' || name[first - 2] == '_');
}

} // namespace

void addFrameOption(CommandOptions& options, std::string const& names, FrameChoice& frame)
{
    options.addOption(names, "NUMBER", "The time at which keyframed values are taken",
                      [&frame](std::string const& text) { frame = parseFrame(text); });
}

std::optional<long> findFrameNumber(std::filesystem::path const& file)
{
    std::string const whole = file.filename().string();
    std::string_view const name = dropExtension(whole);
    std::optional<long> version;
    std::size_t last = name.find_last_of(digits);
    while (last != std::string_view::npos) {
        std::size_t const before = name.find_last_not_of(digits, last);
        std::size_t const first = before == std::string_view::npos ? 0 : before + 1;
        std::size_t const start = hasMinus(name, first) ? first - 1 : first;
        long number = 0;
        bool const isRead =
            std::from_chars(name.data() + start, name.data() + last + 1, number).ec == std::errc();
        bool const isVersion = first > 0 && (name[first - 1] == 'v' || name[first - 1] == 'V');
        if (isRead && !isVersion) {
            return number;
        }
        if (isRead && !version.has_value()) {
            version = number;
        }
        last = first == 0 ? std::string_view::npos : name.find_last_of(digits, first - 1);
    }
    return version;
}

std::string findKeyframedValue(HostNode const& node)
{
    for (HostNode::ValueSlot const& slot : node.getValues()) {
        if (std::visit(ChangesOverTime(), *slot.value->getState())) {
            return slot.name;
        }
    }
    return {};
}

double chooseTime(HostNode const& node, FrameChoice const& frame,
                  std::filesystem::path const& input)
{
    if (frame.has_value()) {
        return *frame;
    }
    std::string const keyframed = findKeyframedValue(node);
    if (!keyframed.empty()) {
        std::optional<long> const number = findFrameNumber(input);
        throw UsageError(quote(keyframed) + " has keyframes; add --frame " +
                         (number.has_value()
                              ? std::to_string(*number) + ", the number in the input's name"
                              : "NUMBER, the time to take"));
    }
    return 0.0;
}
