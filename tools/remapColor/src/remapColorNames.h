#pragma once

#include <array>
#include <string>

/// The keys under which the host keeps the tool's inputs and stored values. Saved projects and the
/// panel's layout use them, so they never change. Built at load, before anything of the tool runs.
namespace RemapColorNames {

inline constexpr int nbChannels = 3;
inline constexpr int nbParams = 5;

/// The widget of the panel for which the tool supplies instance data.
inline std::string const mainContainer = "_mainContainer";

inline std::string const mode = "Mode";
inline std::string const adjust = "Adjust";
inline std::string const adjustCurve = "Adjust Curve";
inline std::string const outputDepth = "Output Depth";
inline std::string const histoZoom = "Histo Zoom";
inline std::string const histoDisplay = "Histo Display";
inline std::string const channelDisplay = "Channel Display";
inline std::string const curveDisplay = "Curve Display";
inline std::string const plotColor = "Plot Color";
inline std::string const plotColorEnabled = "Plot Color Enabled";
inline std::array<std::string, nbChannels> const channelNames = {"Red", "Green", "Blue"};

/// The full name of a member: its parent's full name, a full stop and its own name.
inline std::string join(std::string const& parent, std::string const& member)
{
    return parent + "." + member;
}

namespace Linear {

inline std::string const modeName = "Linear";
inline std::string const inputLevel = "Input Level";
inline std::string const outputLevel = "Output Level";
inline std::string const minimum = "Min";
inline std::string const maximum = "Max";
inline std::string const gamma = "Gamma";
inline std::string const clamp = "Clamp";
inline std::array<std::string, nbParams> const paramNames = {
    join(inputLevel, minimum), join(inputLevel, maximum), join(outputLevel, minimum),
    join(outputLevel, maximum), gamma};
inline std::array<std::string, nbParams> const linkNames = {
    "InputMinLink", "InputMaxLink", "OutputMinLink", "OutputMaxLink", "LinearGammaLink"};

} // namespace Linear

namespace ExrDisplay {

inline std::string const modeName = "EXRDisplay";
inline std::array<std::string, nbParams> const paramNames = {"Exposure", "Defog", "Knee High",
                                                             "Knee Low", "Gamma"};
/// Knee low comes before knee high, unlike in `paramNames`: links are addressed by name only.
inline std::array<std::string, nbParams> const linkNames = {
    "ExposureLink", "DefogLink", "KneeLowLink", "KneeHighLink", "GammaLink"};

} // namespace ExrDisplay

} // namespace RemapColorNames
