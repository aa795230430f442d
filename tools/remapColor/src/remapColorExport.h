#pragma once

/// Marks what the library offers to others; everything else stays inside.
#define REMAPCOLOR_EXPORT __attribute__((visibility("default")))
