#pragma once

/// A configuration with two displays: "Twice" exchanges red and blue and doubles all.
inline constexpr char const* displayConfigText = R"(ocio_profile_version: 2
roles: {scene_linear: lin, default: lin}
displays:
  Other: [!<View> {name: As is, colorspace: lin}]
  Screen:
    - !<View> {name: Looked, colorspace: twice, looks: half}
    - !<View> {name: Twice, colorspace: twice}
active_displays: [Screen, Other]
looks:
  - !<Look>
    name: half
    process_space: lin
    transform: !<MatrixTransform> {matrix: [0.5,0,0,0, 0,0.5,0,0, 0,0,0.5,0, 0,0,0,1]}
colorspaces:
  - !<ColorSpace> {name: lin}
  - !<ColorSpace>
    name: twice
    from_scene_reference: !<MatrixTransform> {matrix: [0,0,2,0, 0,2,0,0, 2,0,0,0, 0,0,0,1]}
)";
