// --frame: which moment of keyframed values a picture gets.

#include "remapcolor/options/FrameOption.h"

#include "remapcolor/options/CommandOptions.h"
#include "runtime/values/NumberText.h"
#include "session/Failures.h"
#include "shots/FrameName.h"

namespace {

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

} // namespace

void addFrameOption(CommandOptions& options, std::string const& names, FrameChoice& frame)
{
    options.addOption(names, "NUMBER", "The time at which keyframed values are taken",
                      [&frame](std::string const& text) { frame = parseFrame(text); });
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
        auto const found = findFrameNumber(input);
        throw UsageError(quote(keyframed) + " has keyframes; add --frame " +
                         (found.has_value()
                              ? std::to_string(found->number) + ", the number in the input's name"
                              : "NUMBER, the time to take"));
    }
    return 0.0;
}
