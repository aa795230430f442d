// What a look sets in vain.

#include "remapcolor/session/LookNotes.h"

#include "pluginAPI/PiImageModifier.h"
#include "remapcolor/text/ValueText.h"
#include "runtime/graph/EvaluatedValue.h"
#include "runtime/graph/ValueNames.h"
#include "runtime/project/ProjectValues.h"
#include "runtime/values/NumberText.h"
#include "session/CurveNotes.h"
#include "session/Failures.h"
#include "session/ToolKeys.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <set>

namespace {

using Slot = HostNode::ValueSlot;

bool isWithin(std::string const& name, std::string const& group)
{
    return name == group || name.starts_with(group + ".");
}

/// `"A", "B"`, at most three by name.
std::string listNames(HostNode const& node, ValueSlots const& slots)
{
    constexpr std::size_t mostNames = 3;
    std::vector<NamedValues> const named = summarise(node, slots);
    std::string text;
    for (std::size_t index = 0; index < std::min(named.size(), mostNames); ++index) {
        text += (index == 0 ? "" : ", ") + quote(named[index].name);
    }
    std::size_t const nbMore = named.size() - std::min(named.size(), mostNames);
    return text + (nbMore == 0 ? "" : " and " + std::to_string(nbMore) + " more");
}

/// Looks at one node's values.
class LookCheck {
public:
    LookCheck(HostNode const& checkedNode, std::vector<double> const& checkedTimes)
        : node(checkedNode), times(checkedTimes), changed(findChangedValues(checkedNode))
    {
        auto const value = node.getValue(ToolKeys::mode);
        auto const& choices = dynamic_cast<PiEnumPolicy const&>(*value->getPolicy());
        int const current = evaluateValue<int>(node, ToolKeys::mode, 0.0);
        for (auto const& [number, label] : choices.getPairs()) {
            (number == current ? mode : otherModes.emplace_back()) = label;
        }
    }

    std::vector<std::string> takeNotes()
    {
        std::string const muteName = PiImageModifier::getMuteValueName();
        if (evaluateValue<bool>(node, muteName, 0.0)) {
            addVain(findColours(), quote(muteName) + " is on; add -s " + muteName + "=false");
        } else if (isAlways<double>(ToolKeys::mix, 0.0)) {
            addVain(findColours(), quote(ToolKeys::mix) + " is 0; add --mix 1");
        } else {
            checkModes();
            checkAdjust();
            checkGammas();
            checkLevels();
        }
        return notes;
    }

    void addVain(ValueSlots const& slots, std::string const& why)
    {
        if (!slots.empty()) {
            notes.push_back("no effect of " + listNames(node, slots) + ": " + why);
        }
    }

    /// What would change the colours, whichever mode is on.
    ValueSlots findColours() const
    {
        return choose([this](Slot const& slot) {
            return slot.name == ToolKeys::mode || isWithin(slot.name, ToolKeys::adjustCurve) ||
                   isWithin(slot.name, mode) ||
                   std::any_of(otherModes.begin(), otherModes.end(),
                               [&](auto const& other) { return isWithin(slot.name, other); });
        });
    }

private:
    ValueSlots choose(std::function<bool(Slot const&)> const& isMeant) const
    {
        ValueSlots chosen;
        std::copy_if(changed.begin(), changed.end(), std::back_inserter(chosen), isMeant);
        return chosen;
    }

    template <typename T>
    bool isAlways(std::string const& name, T wanted) const
    {
        return std::all_of(times.begin(), times.end(), [&](double time) {
            return evaluateValue<T>(node, name, time) == wanted;
        });
    }

    void checkModes()
    {
        for (std::string const& other : otherModes) {
            addVain(choose([&](Slot const& slot) { return isWithin(slot.name, other); }),
                    quote(ToolKeys::mode) + " is " + mode + "; add --mode " + other);
        }
    }

    void checkAdjust()
    {
        if (isAlways<bool>(ToolKeys::adjust, false)) {
            addVain(
                choose([](Slot const& slot) { return isWithin(slot.name, ToolKeys::adjustCurve); }),
                quote(ToolKeys::adjust) + " is off; add -s " + ToolKeys::adjust + "=true");
        }
    }

    void checkGammas()
    {
        ValueSlots const zeros = choose([this](Slot const& slot) {
            return isWithin(slot.name, mode + "." + ToolKeys::gamma) &&
                   std::any_of(times.begin(), times.end(), [&](double time) {
                       double const gamma = evaluateValue<double>(node, slot.name, time);
                       return std::abs(gamma) < std::numeric_limits<float>::min();
                   });
        });
        if (!zeros.empty()) {
            notes.push_back(listNames(node, zeros) +
                            " is 0, which counts as the least number above it: nearly every "
                            "colour becomes 0 or infinite; 1 is no gamma");
        }
    }

    /// Every group of the mode with a minimum and a maximum.
    void checkLevels()
    {
        std::string const ending = std::string(".") + ToolKeys::levelMin;
        for (std::string const& name : listValueNames(node)) {
            if (isWithin(name, mode) && name.ends_with(ending)) {
                checkLevel(name.substr(0, name.size() - ending.size()));
            }
        }
    }

    void checkLevel(std::string const& level)
    {
        std::set<std::string> facts;
        std::string channels;
        ValueSlots const minima = findValues(node, level + "." + ToolKeys::levelMin);
        std::size_t nbChannels = 0;
        for (Slot const& minimum : minima) {
            std::string const channel = minimum.name.substr(minimum.name.rfind('.') + 1);
            std::string const maximum = level + "." + ToolKeys::levelMax + "." + channel;
            std::string const fact = describeLevel(minimum.name, maximum);
            if (!fact.empty()) {
                facts.insert(fact);
                channels += (channels.empty() ? "" : ", ") + channel;
                ++nbChannels;
            }
        }
        if (!facts.empty()) {
            notes.push_back(quote(level) + (nbChannels == minima.size() ? "" : " of " + channels) +
                            ": " + *facts.begin() + "; set " +
                            quote(level + "." + ToolKeys::levelMin) + " and " +
                            quote(level + "." + ToolKeys::levelMax) + " apart");
        }
    }

    /// Empty for a range with some width at all times.
    std::string describeLevel(std::string const& minimumName, std::string const& maximumName) const
    {
        for (double const time : times) {
            double const minimum = evaluateValue<double>(node, minimumName, time);
            double const maximum = evaluateValue<double>(node, maximumName, time);
            if (minimum == maximum) {
                return std::string(ToolKeys::levelMin) + " and " + ToolKeys::levelMax +
                       " are both " + formatNumber(minimum) + ", a range without width";
            }
            if (minimum > maximum) {
                return std::string(ToolKeys::levelMin) + " " + formatNumber(minimum) +
                       " is above " + ToolKeys::levelMax + " " + formatNumber(maximum) +
                       ", which does not invert but counts as a range without width";
            }
        }
        return {};
    }

    HostNode const& node;
    std::vector<double> const& times;
    ValueSlots changed;
    std::string mode;
    std::vector<std::string> otherModes;
    std::vector<std::string> notes;
};

/// Adds the times of a value's keys.
struct KeyTimes {
    std::set<double>& times;

    template <typename T>
    void operator()(Animated<T> const& animated) const
    {
        if (animated.isAnimated()) {
            for (Keyframe<T> const& key : animated.getKeys()) {
                times.insert(key.time);
            }
        }
    }
    void operator()(Vector<double> const&) const {}
};

} // namespace

std::vector<double> listKeyTimes(HostNode const& node)
{
    std::set<double> times;
    for (Slot const& slot : node.getValues()) {
        std::visit(KeyTimes{times}, *slot.value->getState());
    }
    if (times.empty()) {
        times.insert(0.0);
    }
    return {times.begin(), times.end()};
}

Reporter::Facts describeLook(HostNode const& node)
{
    Reporter::Facts facts = {
        {"mode", valueToJson(*node.getValue(ToolKeys::mode)).get<std::string>()}};
    for (auto const& [name, first] : summarise(node, findChangedValues(node))) {
        if (name != ToolKeys::mode) {
            facts.emplace_back(name, formatValue(*first));
        }
    }
    return facts;
}

std::vector<std::string> findLookNotes(HostNode const& node, std::vector<double> const& times)
{
    return LookCheck(node, times).takeNotes();
}

void reportLook(HostNode const& node, std::vector<double> const& times, Reporter& reporter)
{
    for (auto const& notes : {findLookNotes(node, times), findCurveNotes(node, times)}) {
        for (std::string const& note : notes) {
            reporter.note(note);
        }
    }
}
