/// The light of the example scene. Shadows and occlusion are closed formulas per object instead
/// of random samples: they are free of noise, so the file stays small.
#include "shading.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace examples {

namespace {

const Vec3 sunDirection = normalized({-0.285, 0.155, 1.0});
constexpr Vec3 sunlight = {9.5, 6.6, 3.9}; ///< Irradiance across the rays, over pi.
constexpr Vec3 sunDisk = {620.0, 470.0, 290.0};
constexpr double sunSoftness = 0.05; ///< Half width of a shadow's edge per unit of distance.

constexpr Vec3 horizonColor = {1.45, 0.60, 0.25};
constexpr Vec3 zenithColor = {0.012, 0.12, 0.48};
constexpr Vec3 duskColor = {0.62, 0.46, 0.36};    ///< Above and behind the camera: only mirrored.
constexpr Vec3 skyLight = {0.17, 0.22, 0.38};     ///< Diffuse light from above.
constexpr Vec3 groundLight = {0.16, 0.12, 0.085}; ///< Diffuse light from below.

/// Streak of cloud, an ellipse on the plane z = 1 in front of the camera.
struct Cloud {
    double x;
    double y;
    double halfWidth;
    double halfHeight;
    double strength;
};

constexpr std::array<Cloud, 7> clouds = {{
    {-0.20, 0.215, 0.34, 0.016, 0.75},
    {-0.46, 0.120, 0.26, 0.011, 0.65},
    {-0.05, 0.106, 0.22, 0.008, 0.55},
    {0.36, 0.165, 0.30, 0.014, 0.60},
    {0.52, 0.255, 0.26, 0.018, 0.45},
    {0.12, 0.290, 0.36, 0.016, 0.35},
    {0.55, 0.095, 0.22, 0.008, 0.55},
}};

/// Share of the sky the clouds cover in `direction`, in [0, 1].
double cloudCover(Vec3 const& direction)
{
    if (direction.z <= 0.1) {
        return 0.0;
    }
    double clear = 1.0;
    for (Cloud const& cloud : clouds) {
        double const x = (direction.x / direction.z - cloud.x) / cloud.halfWidth;
        double const y = (direction.y / direction.z - cloud.y) / cloud.halfHeight;
        // A wide flat base and a rounder top.
        double const tall = y > 0.0 ? y * 0.6 : y * 1.5;
        clear *= 1.0 - cloud.strength * smoothStep(1.0, 0.0, x * x + tall * tall);
    }
    return 1.0 - clear;
}

/// Share of a round light's disk that `sphere` leaves free, seen from `position`. The light is
/// `softness` wide per unit of distance and `reach` away.
double visiblePast(Sphere const& sphere, Ray const& toLight, double softness, double reach)
{
    const Vec3 toCenter = sphere.center - toLight.origin;
    double const middle = dot(toCenter, toLight.direction);
    if (middle <= 0.0 || middle >= reach) {
        return 1.0;
    }
    double const square = dot(toCenter, toCenter) - middle * middle;
    double const clearance = std::sqrt(std::max(square, 0.0)) - sphere.radius;
    return smoothStep(-1.0, 1.0, clearance / (softness * middle));
}

/// Share of a light not hidden by any object.
double visibility(Ray const& toLight, double softness, double reach)
{
    auto const slabDistance = distanceTo(slab(), toLight);
    double visible = slabDistance && *slabDistance < reach ? 0.0 : 1.0;
    for (Sphere const& sphere : spheres()) {
        visible *= visiblePast(sphere, toLight, softness, reach);
    }
    return visible;
}

/// Share of the diffuse surroundings that near spheres leave open at a surface.
double openness(Hit const& hit)
{
    double open = 1.0;
    for (Sphere const& sphere : spheres()) {
        const Vec3 toCenter = sphere.center - hit.position;
        double const distance = length(toCenter);
        double const facing = dot(hit.normal, toCenter) / distance;
        double const cover = sphere.radius * sphere.radius / (distance * distance);
        open *= 1.0 - clamp01(facing * cover);
    }
    return open;
}

/// Irradiance over pi that the sun gives a surface.
Vec3 sunOn(Hit const& hit)
{
    double const facing = dot(hit.normal, sunDirection);
    if (facing <= 0.0) {
        return {};
    }
    constexpr double sunReach = 1e6;
    return sunlight * (facing * visibility({hit.position, sunDirection}, sunSoftness, sunReach));
}

/// Irradiance over pi that one glowing sphere gives a surface.
Vec3 lampOn(Hit const& hit, Sphere const& lamp)
{
    const Vec3 toLamp = lamp.center - hit.position;
    double const distance = length(toLamp);
    const Vec3 direction = toLamp * (1.0 / distance);
    double const facing = dot(hit.normal, direction);
    if (facing <= 0.0) {
        return {};
    }
    double const size = lamp.radius / distance;
    double const reach = distance - lamp.radius; // The lamp does not shade itself.
    return lamp.material.emission *
           (facing * size * size * visibility({hit.position, direction}, size, reach));
}

bool isLamp(Sphere const& sphere)
{
    return sphere.material.emission.x > 0.0;
}

/// Diffuse light a surface sends out.
Vec3 diffuse(Hit const& hit)
{
    const Vec3 surroundings = mix(groundLight, skyLight, 0.5 + 0.5 * hit.normal.y);
    Vec3 light = surroundings * openness(hit) + sunOn(hit);
    for (Sphere const& sphere : spheres()) {
        if (isLamp(sphere)) {
            light = light + lampOn(hit, sphere);
        }
    }
    return hit.material.albedo * light;
}

/// `color` seen through `distance` of hazy air, which takes the colour of the horizon.
Vec3 throughHaze(Vec3 const& color, double distance)
{
    constexpr double halfDistance = 75.0; ///< Half of the light is haze from here.
    constexpr Vec3 hazeColor = {0.70, 0.34, 0.26};
    // The fourth power leaves the near shadows clear of haze.
    double const power = wholePower(distance / halfDistance, 4);
    return mix(color, hazeColor, power / (power + 1.0));
}

bool isBlack(Vec3 const& color)
{
    return dot(color, color) == 0.0;
}

} // namespace

double grazing(double cosine)
{
    return wholePower(1.0 - clamp01(cosine), 5);
}

Vec3 skyColor(Vec3 const& direction)
{
    double const height = std::max(direction.y, 0.0);
    double const warmth = 1.0 - height / (height + 0.11);
    const Vec3 above = mix(zenithColor, duskColor, smoothStep(0.2, -0.7, direction.z));
    const Vec3 clear = mix(above, horizonColor, warmth * warmth);
    double const apart = 1.0 - dot(direction, sunDirection); // About half the angle squared.
    double const narrowGlow = 0.000165 / (apart * apart + 0.00006);
    double const wideGlow = 0.004 / (apart + 0.006);
    const Vec3 glow = Vec3{1.0, 0.62, 0.30} * (narrowGlow + wideGlow);
    const Vec3 cloudLight = Vec3{1.35, 0.72, 0.50} + glow * 1.3;
    const Vec3 sky = mix(clear + glow, cloudLight, cloudCover(direction));
    return sky + sunDisk * smoothStep(0.00042, 0.00026, apart);
}

Vec3 lightAlong(Ray const& ray, std::optional<Hit> const& hit, int bounces)
{
    if (!hit) {
        return skyColor(ray.direction);
    }
    Material const& material = hit->material;
    if (!isBlack(material.emission)) {
        return material.emission;
    }
    Vec3 light = isBlack(material.albedo) ? Vec3{} : diffuse(*hit);
    if (bounces > 0 && !isBlack(material.mirror)) {
        const Ray mirrored = {hit->position, reflected(ray.direction, hit->normal)};
        double const share = grazing(-dot(ray.direction, hit->normal)) * material.grazingGain;
        const Vec3 mirror = mix(material.mirror, {1.0, 1.0, 1.0}, share);
        light = light + mirror * lightAlong(mirrored, nearestHit(mirrored), bounces - 1);
    }
    return throughHaze(light, hit->distance);
}

} // namespace examples
