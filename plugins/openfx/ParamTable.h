#pragma once

#include "ParamNames.h"
#include "runtime/values/HostValue.h"

#include <cstddef>
#include <string>
#include <vector>

/// One parameter as a host shows and saves it.
struct ParamSpec {
    enum class Kind { Group, Choice, Number, Switch, Link, Curves, CurveText, Counter, Button };

    Kind kind;
    std::string name;  ///< for ever: hosts save it. ASCII letters only
    std::string label; ///< what the user sees
    std::string hint;
    std::string parent; ///< name of its group; empty for none
    std::string input;  ///< full name of the tool's input or stored value behind it; may be empty

    double defaultNumber = 0.0; ///< also of choices (an index) and switches (0 or 1)
    double minimum = 0.0;       ///< infinite where the tool has no bound
    double maximum = 0.0;
    double displayMinimum = 0.0;
    double displayMaximum = 0.0;
    std::vector<std::string> options{}; ///< labels of a choice; an option's place is its value
    bool canAnimate = true;
};

/// All parameters, groups before what is in them, made from the tool's own description: the same
/// in every process. What a host adds to a tool (mix, premultiplication) stands at the end.
class ParamTable {
public:
    /// Names that others than the table need.
    static constexpr char const* outputDepth = "outputDepth";
    static constexpr char const* mix = "mix";
    static constexpr char const* unpremultiply = "unpremult";
    static constexpr char const* curves = "adjustCurve";
    static constexpr char const* curveText = openFxNames::curveText;
    static constexpr char const* curveEdits = "adjustCurveEdits";
    static constexpr char const* resetCurves = "resetAdjustedCurves";

    /// Reads the tool's description, whose packages run. The caller is alone in making nodes.
    ParamTable();

    std::vector<ParamSpec> const& getSpecs() const { return specs; }

    /// The place of the parameter of that name; the number of parameters if there is none.
    std::size_t find(std::string const& name) const;

    /// The places of all channels of the value to which that one belongs, if they have a link;
    /// `link` is the link's place. Empty for all others.
    struct Linked {
        std::vector<std::size_t> channels{};
        std::size_t link = 0;
    };
    Linked findLinked(std::size_t place) const;

    /// Names of the tool's curve inputs: red, green, blue.
    std::vector<std::string> const& getCurveInputs() const { return curveInputs; }

    /// What a curve input holds in a new node.
    ValueState const& getDefaultCurve() const { return defaultCurve; }

private:
    class Builder;

    std::vector<ParamSpec> specs;
    std::vector<std::string> curveInputs;
    ValueState defaultCurve{Animated<CurvePoints>(CurvePoints())};
};
