// The parameters, made from the tool's description.

#include "ParamTable.h"

#include "ParamNames.h"
#include "ToolNode.h"
#include "pluginAPI/PiImageModifier.h"
#include "runtime/graph/HostGraph.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace {

using Kind = ParamSpec::Kind;
using Input = PiStructuredPolicyDescriptor::Member;

/// What the tool's description does not say of a value: where a number's slider goes, and what it
/// is for.
struct Advice {
    char const* input;
    double displayMinimum;
    double displayMaximum;
    char const* hint;
};

constexpr std::array<Advice, 15> allAdvice = {{
    {"Mode", 0.0, 0.0,
     "Linear: levels and gamma. EXRDisplay: exposure, defog, knee and gamma of a display."},
    {"Linear.Input Level.Min", 0.0, 1.0, "The value that becomes the output minimum."},
    {"Linear.Input Level.Max", 0.0, 1.0, "The value that becomes the output maximum."},
    {"Linear.Output Level.Min", 0.0, 1.0,
     "What the input minimum becomes. An output minimum above the maximum gives a flat picture."},
    {"Linear.Output Level.Max", 0.0, 1.0, "What the input maximum becomes."},
    {"Linear.Gamma", 0.2, 5.0, "Brightens above 1, darkens below. Applied after the levels."},
    {"Linear.Clamp", 0.0, 0.0, "Limits the result, after the curves, to the output levels."},
    {"EXRDisplay.Exposure", -10.0, 10.0, "Brighter or darker, in stops."},
    {"EXRDisplay.Defog", 0.0, 0.1, "Taken away from every value before exposure."},
    {"EXRDisplay.Knee High", 3.5, 7.5, "The stop that the knee brings to display white."},
    {"EXRDisplay.Knee Low", -3.0, 3.0, "The stop from which highlights are compressed."},
    {"EXRDisplay.Gamma", 0.5, 4.0, "Gamma of the display."},
    {"Adjust", 0.0, 0.0, "Whether the curves are applied."},
    {"Output Depth", 0.0, 0.0,
     "Of a component of the result, in hosts that keep several depths at once."},
    {"Mix", 0.0, 1.0, "How much of the result is seen: 0 is the source."},
}};

/// The advice for the input of that full name or for the structure that it is a channel of.
Advice const* findAdvice(std::string const& input)
{
    for (Advice const& advice : allAdvice) {
        std::string const known = advice.input;
        if (input == known || input.substr(0, input.rfind('.')) == known) {
            return &advice;
        }
    }
    return nullptr;
}

template <typename T>
T evaluate(ValueState const& state)
{
    return std::get<Animated<T>>(state).evaluate(0.0).getValue();
}

} // namespace

class ParamTable::Builder {
public:
    explicit Builder(ParamTable& builtTable) : table(builtTable)
    {
        graph = makeShared<HostGraph>();
        node = graph->createNode(findTool());
    }

    void build()
    {
        addTop("Mode");
        addTop("Linear");
        addTop("EXRDisplay");
        addTop("Adjust");
        addTop("Adjust Curve");
        addTop("Output Depth");
        add({Kind::Switch, unpremultiply, "(Un)premult",
             "Divide by alpha before, multiply by it after. Where alpha is 0 neither is done.", "",
             ""});
        addTop(PiImageModifier::getMixInputName());
    }

private:
    void add(ParamSpec spec) { table.specs.push_back(std::move(spec)); }

    void addTop(std::string const& name)
    {
        for (PiDeclaration const& declaration : node->getDeclarations()) {
            if (declaration.kind == PiDeclaration::Requires && declaration.input.name == name) {
                addInput("", "", declaration.input);
            }
        }
    }

    void addInput(std::string const& prefix, std::string const& group, Input const& input)
    {
        std::string const fullName = prefix + input.name;
        if (input.type) {
            return addValue(group, fullName, input.name);
        }
        auto const& members = input.structure.getMembers();
        bool const isCurves = !members.empty() && members.front().type &&
                              members.front().type->getCode() == PiSocketType::Curve;
        if (isCurves) {
            return addCurves(fullName, members);
        }
        std::string const own = openFxNames::fromInput(fullName);
        add({Kind::Group, own, input.name, "", group, ""});
        for (openFxNames::Link const& link : openFxNames::links) {
            if (link.input == fullName) {
                add({Kind::Link, openFxNames::ofLink(fullName), "Link",
                     "A change of one channel changes all three.", own, link.stored,
                     evaluate<bool>(getState(link.stored)) ? 1.0 : 0.0});
            }
        }
        for (Input const& member : members) {
            addInput(fullName + ".", own, member);
        }
    }

    void addCurves(std::string const& fullName, std::vector<Input> const& channels)
    {
        for (Input const& channel : channels) {
            table.curveInputs.push_back(fullName + "." + channel.name);
        }
        table.defaultCurve = getState(table.curveInputs.front());
        add({Kind::Curves, curves, fullName,
             "A curve for red, green and blue each, after the mode. Beyond its ends a curve goes "
             "on "
             "in a straight line.",
             "", ""});
        add({Kind::CurveText, curveText, fullName + " Text",
             "Exact curves as remapcolor writes them, a line each: red=hx,hy x,y hx,hy; ... with "
             "the handles of every key, or rgb=x,y x,y ... for smooth ones. Leads while it is not "
             "empty.",
             "", ""});
        add({Kind::Counter, curveEdits, fullName + " Edits", "", "", ""});
        add({Kind::Button, resetCurves, "Reset Adjusted Curves",
             "Gives all three curves their default shape, a straight line.", "", ""});
    }

    void addValue(std::string const& group, std::string const& fullName, std::string const& label)
    {
        RCShdPtr<HostValue> const value = node->getValue(fullName);
        if (value.isNull()) {
            return; // a picture
        }
        Advice const* const advice = findAdvice(fullName);
        std::string const hint = advice == nullptr ? "" : advice->hint;
        ParamSpec spec{Kind::Switch, openFxNames::fromInput(fullName),
                       label,        hint + " (" + fullName + ")",
                       group,        fullName};
        ValueState const state = *value->getState();
        if (std::holds_alternative<Animated<bool>>(state)) {
            spec.defaultNumber = evaluate<bool>(state) ? 1.0 : 0.0;
        } else if (std::holds_alternative<Animated<int>>(state)) {
            describeChoice(spec, dynamic_cast<PiEnumPolicy const&>(*value->getPolicy()));
        } else {
            describeNumber(spec, findLimits(value->getPolicy().get()), evaluate<double>(state));
            if (advice != nullptr) {
                spec.displayMinimum = advice->displayMinimum;
                spec.displayMaximum = advice->displayMaximum;
            }
        }
        add(spec);
    }

    /// The tool's choices count from 0 without a gap, as those of hosts do.
    static void describeChoice(ParamSpec& spec, PiEnumPolicy const& policy)
    {
        spec.kind = Kind::Choice;
        spec.defaultNumber = policy.getDefault();
        spec.canAnimate = policy.isAnimatable();
        for (PiEnumPolicy::Pair const& pair : policy.getPairs()) {
            spec.options.push_back(pair.second);
        }
    }

    static void describeNumber(ParamSpec& spec, NumberLimits const& limits, double number)
    {
        spec.kind = Kind::Number;
        spec.defaultNumber = number;
        spec.minimum = limits.minimum;
        spec.maximum = limits.maximum;
        spec.displayMinimum = std::max(spec.minimum, -1.0);
        spec.displayMaximum = std::min(spec.maximum, 1.0);
    }

    ValueState getState(std::string const& name) const { return *node->getValue(name)->getState(); }

    ParamTable& table;
    RCShdPtr<HostGraph> graph;
    RCShdPtr<HostNode> node;
};

ParamTable::ParamTable()
{
    Builder(*this).build();
}

std::size_t ParamTable::find(std::string const& name) const
{
    auto const found = std::find_if(specs.begin(), specs.end(),
                                    [&](ParamSpec const& spec) { return spec.name == name; });
    return static_cast<std::size_t>(found - specs.begin());
}

ParamTable::Linked ParamTable::findLinked(std::size_t place) const
{
    std::string const& group = specs[place].parent;
    std::size_t const link = find(group + "Link");
    if (specs[place].kind != Kind::Number || link == specs.size()) {
        return {};
    }
    Linked linked{{}, link};
    for (std::size_t other = 0; other < specs.size(); ++other) {
        if (specs[other].kind == Kind::Number && specs[other].parent == group) {
            linked.channels.push_back(other);
        }
    }
    return linked;
}
