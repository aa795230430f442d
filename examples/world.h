/// The objects of the example scene and where a ray meets them.
///
/// y points up, the ground is the plane y = 0, the camera looks along +z. Everything here is
/// constant data and pure functions, usable from any thread.
#pragma once

#include "vec3.h"

#include <optional>
#include <span>

namespace examples {

struct Ray {
    Vec3 origin;
    Vec3 direction; ///< Length 1.

    Vec3 at(double distance) const { return origin + direction * distance; }
};

struct Material {
    Vec3 albedo;              ///< Diffuse; a negative part makes an out-of-gamut colour.
    Vec3 mirror;              ///< Reflection seen head on, per channel: 0.04 for a glaze.
    Vec3 emission;            ///< Own light, the same in all directions.
    double grazingGain = 1.0; ///< Share of the mirror's growth to 1 at grazing angles.
};

struct Sphere {
    Vec3 center;
    double radius;
    Material material;
};

/// Axis-aligned box.
struct Box {
    Vec3 low;
    Vec3 high;
};

struct Hit {
    double distance; ///< Along the ray, above 0.
    Vec3 position;
    Vec3 normal; ///< Length 1, outwards.
    Material material;
};

/// All opaque spheres, the glowing ones included.
std::span<const Sphere> spheres();

/// The dark slab: a faint engraving lies in its deep shadow.
Box const& slab();

/// The soap bubble; only the camera sees it, and it is not among `spheres()`.
Sphere const& bubble();

/// Distance at which `ray` first enters `sphere` from outside, in front of its origin.
std::optional<double> distanceTo(Sphere const& sphere, Ray const& ray);

/// Distance at which `ray` enters `box` from outside. No direction component may be 0 while the
/// origin lies on the plane of a face.
std::optional<double> distanceTo(Box const& box, Ray const& ray);

/// The nearest surface `ray` meets, the bubble excepted; nothing when it leaves to the sky.
std::optional<Hit> nearestHit(Ray const& ray);

} // namespace examples
