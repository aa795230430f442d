#pragma once

/// The few names of the tool for which the command line has options of its own. All other inputs
/// are known from the tool's description alone.
namespace ToolKeys {

inline constexpr char const* libraryFile = "libVXremapColor.vxtool";
inline constexpr char const* tool = "Remap Color";

inline constexpr char const* mode = "Mode";
inline constexpr char const* adjust = "Adjust";
inline constexpr char const* adjustCurve = "Adjust Curve"; ///< a curve per channel
inline constexpr char const* outputDepth = "Output Depth";
inline constexpr char const* mix = "Mix"; ///< the host's, for masking

/// Within a mode's group.
inline constexpr char const* gamma = "Gamma";
inline constexpr char const* levelMin = "Min";
inline constexpr char const* levelMax = "Max";

/// Choices of "Output Depth".
inline constexpr int depth16 = 1;
inline constexpr int depth32 = 2;
inline constexpr int depthOfInput = 3;

} // namespace ToolKeys
