/// The example scene as the camera sees it.
#pragma once

#include "picture.h"

namespace examples {

/// The scene, 480 by 270 pixels with colour, alpha and depth. Takes some seconds.
Picture renderScene();

} // namespace examples
