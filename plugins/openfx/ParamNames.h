#pragma once

#include <array>
#include <cctype>
#include <cstddef>
#include <string>

/// How the plug-in's parameters are called: by names made from those of the tool's inputs. Hosts
/// save them, so they never change.
namespace openFxNames {

inline constexpr char const* plugin = "org.remapcolor.RemapColor";
inline constexpr char const* curveText = "adjustCurveText";

/// The tool's values that link the channels of its inputs.
struct Link {
    char const* input;  ///< the structure of three channels
    char const* stored; ///< the switch
};

inline constexpr std::array<Link, 10> links = {{
    {"Linear.Input Level.Min", "InputMinLink"},
    {"Linear.Input Level.Max", "InputMaxLink"},
    {"Linear.Output Level.Min", "OutputMinLink"},
    {"Linear.Output Level.Max", "OutputMaxLink"},
    {"Linear.Gamma", "LinearGammaLink"},
    {"EXRDisplay.Exposure", "ExposureLink"},
    {"EXRDisplay.Defog", "DefogLink"},
    {"EXRDisplay.Knee High", "KneeHighLink"},
    {"EXRDisplay.Knee Low", "KneeLowLink"},
    {"EXRDisplay.Gamma", "GammaLink"},
}};

/// "EXRDisplay.Knee High.Red" becomes "exrDisplayKneeHighRed".
inline std::string fromInput(std::string const& input)
{
    std::string name;
    for (char const letter : input) {
        if (letter != '.' && letter != ' ') {
            name += letter;
        }
    }
    auto const lower = [](char letter) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    };
    auto const isUpper = [&](std::size_t place) {
        return place < name.size() && lower(name[place]) != name[place];
    };
    for (std::size_t place = 0; isUpper(place); ++place) {
        if (place > 0 && !isUpper(place + 1)) {
            break; // the next word's capital
        }
        name[place] = lower(name[place]);
    }
    return name;
}

/// The name of the link of a structure of three channels.
inline std::string ofLink(std::string const& input)
{
    return fromInput(input) + "Link";
}

} // namespace openFxNames
