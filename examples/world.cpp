/// The objects of the example scene: their table, their patterns and the ray tests.
#include "world.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace examples {

namespace {

constexpr Vec3 glaze = {0.04, 0.04, 0.04};
constexpr Vec3 black = {0.0, 0.0, 0.0};
constexpr Vec3 gold = {1.0, 0.66, 0.22};

/// Rays leaving a surface would find it again below this distance.
constexpr double nearestDistance = 1e-4;

constexpr std::array<Sphere, 10> sphereTable = {{
    {{-1.95, 0.80, 0.50}, 0.80, {{0.80, 0.012, -0.015}, glaze, black}}, // red
    {{-0.30, 1.00, 1.30}, 1.00, {black, gold, black}},
    {{0.95, 0.50, -0.55}, 0.50, {{-0.10, 0.55, 0.03}, glaze, black}}, // green
    {{2.00, 0.78, 1.00}, 0.78, {{-0.03, 0.03, 0.75}, glaze, black}},  // blue
    {{-0.62, 0.27, -1.55}, 0.27, {black, black, {52.0, 30.0, 11.0}}}, // lamp, warm
    {{1.95, 0.15, -1.30}, 0.15, {black, black, {4.0, 14.0, 36.0}}},   // lamp, cold
    {{-2.35, 0.22, -1.20}, 0.22, {black, {0.92, 0.93, 0.95}, black}}, // chrome
    {{-42.0, -42.0, 80.0}, 50.0, {{0.10, 0.09, 0.12}, black, black}}, // hills
    {{14.0, -86.0, 110.0}, 95.0, {{0.08, 0.09, 0.13}, black, black}},
    {{60.0, -48.0, 95.0}, 60.0, {{0.10, 0.09, 0.12}, black, black}},
}};

constexpr Box slabBox = {{2.95, 0.0, 1.9}, {4.05, 2.35, 2.3}};

constexpr Sphere bubbleSphere = {{1.02, 1.72, -0.9}, 0.46, {}};

double remainderOfTwo(double value)
{
    return value - 2.0 * std::floor(value * 0.5);
}

/// Checker of unit squares that fades into its average with the distance from the camera, before
/// the squares become smaller than a pixel.
Material groundMaterial(Vec3 const& position)
{
    constexpr Vec3 light = {0.50, 0.45, 0.40};
    constexpr Vec3 dark = {0.075, 0.085, 0.11};
    constexpr double squareSize = 0.8;
    double const square = std::floor(position.x / squareSize) + std::floor(position.z / squareSize);
    double const even = remainderOfTwo(square) < 0.5 ? 1.0 : 0.0;
    double const contrast = smoothStep(26.0, 6.0, position.z);
    const Vec3 albedo = mix(dark, light, 0.5 + (even - 0.5) * contrast);
    return {albedo, {0.03, 0.03, 0.03}, black, 0.55};
}

/// Rings and rays engraved into the front of the slab, three times darker than its face.
Material slabMaterial(Vec3 const& position)
{
    constexpr double face = 0.020;
    constexpr double engraved = 0.006;
    constexpr double ringWidth = 0.07;
    double const x = position.x - 0.5 * (slabBox.low.x + slabBox.high.x);
    double const y = position.y - 1.45;
    double const radius = std::sqrt(x * x + y * y);
    bool const isRing = radius < 0.42 && remainderOfTwo(radius / ringWidth) < 1.0;
    bool const isLine =
        y < -0.55 && y > -1.15 && remainderOfTwo(y / ringWidth) < 1.0 && std::abs(x) < 0.42;
    double const albedo = isRing || isLine ? engraved : face;
    return {{albedo, albedo, albedo * 1.15}, black, black, 0.0};
}

/// Normal of the face of `box` that `position` lies on: the one it exceeds the others at.
Vec3 boxNormal(Box const& box, Vec3 const& position)
{
    const Vec3 center = (box.low + box.high) * 0.5;
    const Vec3 half = (box.high - box.low) * 0.5;
    const Vec3 offset = position - center;
    double const x = std::abs(offset.x) / half.x;
    double const y = std::abs(offset.y) / half.y;
    double const z = std::abs(offset.z) / half.z;
    if (x >= y && x >= z) {
        return {offset.x > 0.0 ? 1.0 : -1.0, 0.0, 0.0};
    }
    if (y >= z) {
        return {0.0, offset.y > 0.0 ? 1.0 : -1.0, 0.0};
    }
    return {0.0, 0.0, offset.z > 0.0 ? 1.0 : -1.0};
}

std::optional<double> distanceToGround(Ray const& ray)
{
    if (ray.direction.y >= 0.0) {
        return std::nullopt;
    }
    double const distance = -ray.origin.y / ray.direction.y;
    return distance > nearestDistance ? std::optional(distance) : std::nullopt;
}

/// The stretch of a ray between two parallel planes.
struct Stretch {
    double enter;
    double leave;
};

Stretch between(double origin, double direction, double low, double high)
{
    double const first = (low - origin) / direction;
    double const second = (high - origin) / direction;
    return {std::min(first, second), std::max(first, second)};
}

} // namespace

std::span<const Sphere> spheres()
{
    return sphereTable;
}

Box const& slab()
{
    return slabBox;
}

Sphere const& bubble()
{
    return bubbleSphere;
}

std::optional<double> distanceTo(Sphere const& sphere, Ray const& ray)
{
    const Vec3 toCenter = sphere.center - ray.origin;
    double const middle = dot(toCenter, ray.direction);
    double const square =
        sphere.radius * sphere.radius - (dot(toCenter, toCenter) - middle * middle);
    if (square <= 0.0) {
        return std::nullopt;
    }
    double const distance = middle - std::sqrt(square);
    return distance > nearestDistance ? std::optional(distance) : std::nullopt;
}

std::optional<double> distanceTo(Box const& box, Ray const& ray)
{
    const Stretch x = between(ray.origin.x, ray.direction.x, box.low.x, box.high.x);
    const Stretch y = between(ray.origin.y, ray.direction.y, box.low.y, box.high.y);
    const Stretch z = between(ray.origin.z, ray.direction.z, box.low.z, box.high.z);
    double const enter = std::max({x.enter, y.enter, z.enter});
    double const leave = std::min({x.leave, y.leave, z.leave});
    if (enter >= leave || enter <= nearestDistance) {
        return std::nullopt;
    }
    return enter;
}

std::optional<Hit> nearestHit(Ray const& ray)
{
    std::optional<Hit> nearest;
    auto const isNearer = [&nearest](std::optional<double> const& distance) {
        return distance && (!nearest || *distance < nearest->distance);
    };
    for (Sphere const& sphere : sphereTable) {
        if (auto const distance = distanceTo(sphere, ray); isNearer(distance)) {
            const Vec3 position = ray.at(*distance);
            const Vec3 normal = (position - sphere.center) * (1.0 / sphere.radius);
            nearest = Hit{*distance, position, normal, sphere.material};
        }
    }
    if (auto const distance = distanceTo(slabBox, ray); isNearer(distance)) {
        const Vec3 position = ray.at(*distance);
        nearest = Hit{*distance, position, boxNormal(slabBox, position), slabMaterial(position)};
    }
    if (auto const distance = distanceToGround(ray); isNearer(distance)) {
        const Vec3 position = ray.at(*distance);
        nearest = Hit{*distance, position, {0.0, 1.0, 0.0}, groundMaterial(position)};
    }
    return nearest;
}

} // namespace examples
