/// The light of the example scene: sky, sun, lamps and what surfaces send back.
#pragma once

#include "world.h"

namespace examples {

/// Colour of the sky in `direction` (length 1): a warm horizon, a blue zenith, thin clouds, and
/// the sun, whose disk is several hundred.
Vec3 skyColor(Vec3 const& direction);

/// Light arriving against `ray`, given what it meets: `hit` must be `nearestHit(ray)`.
/// Mirrors are followed for `bounces` more rays, at least 0. Components may be negative where an
/// out-of-gamut surface is lit.
Vec3 lightAlong(Ray const& ray, std::optional<Hit> const& hit, int bounces);

/// Weight of a mirror at an angle: 0 seen head on (`cosine` 1), 1 at grazing angles (0).
double grazing(double cosine);

} // namespace examples
