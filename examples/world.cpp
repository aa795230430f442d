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
    {{0.95, 0.50, -0.55}, 0.50, {{-0.10, 0.55, 0.03}, glaze, black}},  // green
    {{2.00, 0.78, 1.00}, 0.78, {{-0.03, 0.03, 0.75}, glaze, black}},   // blue
    {{-0.62, 0.27, -1.55}, 0.27, {black, black, {52.0, 30.0, 11.0}}},  // lamp, warm
    {{1.95, 0.15, -1.30}, 0.15, {black, black, {4.0, 14.0, 36.0}}},    // lamp, cold
    {{-2.35, 0.22, -1.20}, 0.22, {black, {0.92, 0.93, 0.95}, black}},  // chrome
    {{-42.0, -42.0, 80.0}, 50.0, {{0.10, 0.09, 0.12}, black, black}},  // hills
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
Material groundMaterial(const Vec3& position)
{
    constexpr Vec3 light = {0.50, 0.45, 0.40};
    constexpr Vec3 dark = {0.075, 0.085, 0.11};
    constexpr double squareSize = 0.8;
    const double square = std::floor(position.x / squareSize) + std::floor(position.z / squareSize);
    const double even = remainderOfTwo(square) < 0.5 ? 1.0 : 0.0;
    const double contrast = smoothStep(26.0, 6.0, position.z);
    const Vec3 albedo = mix(dark, light, 0.5 + (even - 0.5) * contrast);
    return {albedo, {0.03, 0.03, 0.03}, black, 0.55};
}

/// Rings and rays engraved into the front of the slab, three times darker than its face.
Material slabMaterial(const Vec3& position)
{
    constexpr double face = 0.020;
    constexpr double engraved = 0.006;
    constexpr double ringWidth = 0.07;
    const double x = position.x - 0.5 * (slabBox.low.x + slabBox.high.x);
    const double y = position.y - 1.45;
    const double radius = std::sqrt(x * x + y * y);
    const bool isRing = radius < 0.42 && remainderOfTwo(radius / ringWidth) < 1.0;
    const bool isLine = y < -0.55 && y > -1.15 && remainderOfTwo(y / ringWidth) < 1.0 &&
                        std::abs(x) < 0.42;
    const double albedo = isRing || isLine ? engraved : face;
    return {{albedo, albedo, albedo * 1.15}, black, black, 0.0};
}

/// Normal of the face of `box` that `position` lies on: the one it exceeds the others at.
Vec3 boxNormal(const Box& box, const Vec3& position)
{
    const Vec3 center = (box.low + box.high) * 0.5;
    const Vec3 half = (box.high - box.low) * 0.5;
    const Vec3 offset = position - center;
    const double x = std::abs(offset.x) / half.x;
    const double y = std::abs(offset.y) / half.y;
    const double z = std::abs(offset.z) / half.z;
    if (x >= y && x >= z) {
        return {offset.x > 0.0 ? 1.0 : -1.0, 0.0, 0.0};
    }
    if (y >= z) {
        return {0.0, offset.y > 0.0 ? 1.0 : -1.0, 0.0};
    }
    return {0.0, 0.0, offset.z > 0.0 ? 1.0 : -1.0};
}

std::optional<double> distanceToGround(const Ray& ray)
{
    if (ray.direction.y >= 0.0) {
        return std::nullopt;
    }
    const double distance = -ray.origin.y / ray.direction.y;
    return distance > nearestDistance ? std::optional(distance) : std::nullopt;
}

/// The stretch of a ray between two parallel planes.
struct Stretch {
    double enter;
    double leave;
};

Stretch between(double origin, double direction, double low, double high)
{
    const double first = (low - origin) / direction;
    const double second = (high - origin) / direction;
    return {std::min(first, second), std::max(first, second)};
}

} // namespace

std::span<const Sphere> spheres()
{
    return sphereTable;
}

const Box& slab()
{
    return slabBox;
}

const Sphere& bubble()
{
    return bubbleSphere;
}

std::optional<double> distanceTo(const Sphere& sphere, const Ray& ray)
{
    const Vec3 toCenter = sphere.center - ray.origin;
    const double middle = dot(toCenter, ray.direction);
    const double square =
        sphere.radius * sphere.radius - (dot(toCenter, toCenter) - middle * middle);
    if (square <= 0.0) {
        return std::nullopt;
    }
    const double distance = middle - std::sqrt(square);
    return distance > nearestDistance ? std::optional(distance) : std::nullopt;
}

std::optional<double> distanceTo(const Box& box, const Ray& ray)
{
    const Stretch x = between(ray.origin.x, ray.direction.x, box.low.x, box.high.x);
    const Stretch y = between(ray.origin.y, ray.direction.y, box.low.y, box.high.y);
    const Stretch z = between(ray.origin.z, ray.direction.z, box.low.z, box.high.z);
    const double enter = std::max({x.enter, y.enter, z.enter});
    const double leave = std::min({x.leave, y.leave, z.leave});
    if (enter >= leave || enter <= nearestDistance) {
        return std::nullopt;
    }
    return enter;
}

std::optional<Hit> nearestHit(const Ray& ray)
{
    std::optional<Hit> nearest;
    const auto isNearer = [&nearest](const std::optional<double>& distance) {
        return distance && (!nearest || *distance < nearest->distance);
    };
    for (const Sphere& sphere : sphereTable) {
        if (const auto distance = distanceTo(sphere, ray); isNearer(distance)) {
            const Vec3 position = ray.at(*distance);
            const Vec3 normal = (position - sphere.center) * (1.0 / sphere.radius);
            nearest = Hit{*distance, position, normal, sphere.material};
        }
    }
    if (const auto distance = distanceTo(slabBox, ray); isNearer(distance)) {
        const Vec3 position = ray.at(*distance);
        nearest = Hit{*distance, position, boxNormal(slabBox, position), slabMaterial(position)};
    }
    if (const auto distance = distanceToGround(ray); isNearer(distance)) {
        const Vec3 position = ray.at(*distance);
        nearest = Hit{*distance, position, {0.0, 1.0, 0.0}, groundMaterial(position)};
    }
    return nearest;
}

} // namespace examples
