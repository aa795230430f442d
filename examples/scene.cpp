/// The camera of the example scene: super-sampling, the see-through bubble and the depth
/// channel.
#include "scene.h"

#include "shading.h"

#include <algorithm>
#include <cmath>

namespace examples {

namespace {

constexpr int sceneWidth = 480;
constexpr int sceneHeight = 270;
constexpr int samplesPerSide = 6; ///< Samples of a pixel lie on a regular grid: no noise.
constexpr int mirrorBounces = 4;

constexpr Vec3 eye = {0.0, 1.18, -6.2};
constexpr double viewSlope = 0.60;     ///< Horizontal half of the view at distance 1.
constexpr double horizonShift = -0.03; ///< Slope; moves the view down without tilting it.

constexpr double skyDepth = 1000.0;

/// Light and coverage of one sample, premultiplied.
struct Sample {
    Vec3 color;
    double alpha;
};

/// Ray through a point of the picture, in pixels from its upper left corner.
Ray cameraRay(double x, double y)
{
    constexpr double pixelSlope = 2.0 * viewSlope / sceneWidth;
    double const right = (x - 0.5 * sceneWidth) * pixelSlope;
    double const up = (0.5 * sceneHeight - y) * pixelSlope + horizonShift;
    return {eye, normalized({right, up, 1.0})};
}

/// The bubble is thin: it mirrors the surroundings at its rim and lets the rest of the picture
/// fade to nothing in its middle, so that a background put under the picture shows through.
Sample throughBubble(Ray const& ray, double distance, Sample const& behind)
{
    constexpr double middleAlpha = 0.22;
    const Vec3 normal = (ray.at(distance) - bubble().center) * (1.0 / bubble().radius);
    double const cosine = -dot(ray.direction, normal);
    const Ray mirrored = {ray.at(distance), reflected(ray.direction, normal)};
    const Vec3 film = {1.3 - 0.9 * cosine, 0.55 + 0.3 * cosine, 0.7 + 0.6 * cosine};
    const Vec3 light = film * lightAlong(mirrored, nearestHit(mirrored), mirrorBounces);
    double const mirror = 0.09 + 0.91 * grazing(cosine);
    double const cover = 1.0 - (1.0 - middleAlpha) * smoothStep(0.0, 0.75, cosine);
    return {light * mirror + behind.color * (cover * (1.0 - mirror)),
            mirror + cover * (1.0 - mirror)};
}

Sample sampleAt(double x, double y)
{
    const Ray ray = cameraRay(x, y);
    const std::optional<Hit> hit = nearestHit(ray);
    const Sample solid = {lightAlong(ray, hit, mirrorBounces), 1.0};
    const std::optional<double> bubbleDistance = distanceTo(bubble(), ray);
    if (!bubbleDistance || (hit && hit->distance < *bubbleDistance)) {
        return solid;
    }
    return throughBubble(ray, *bubbleDistance, solid);
}

/// Depth of the surface in the middle of the pixel: an average over samples would lie between
/// objects. The bubble has no depth. Rounded to 1/256, which compresses far better.
double depthAt(double x, double y)
{
    constexpr double steps = 256.0;
    const Ray ray = cameraRay(x, y);
    const std::optional<Hit> hit = nearestHit(ray);
    double const depth = hit ? hit->position.z - eye.z : skyDepth;
    return std::floor(std::min(depth, skyDepth) * steps + 0.5) / steps;
}

Pixel pixelAt(int column, int row)
{
    constexpr double weight = 1.0 / (samplesPerSide * samplesPerSide);
    Pixel pixel;
    pixel.alpha = 0.0;
    for (int sampleRow = 0; sampleRow < samplesPerSide; ++sampleRow) {
        for (int sampleColumn = 0; sampleColumn < samplesPerSide; ++sampleColumn) {
            double const x = column + (sampleColumn + 0.5) / samplesPerSide;
            double const y = row + (sampleRow + 0.5) / samplesPerSide;
            const Sample sample = sampleAt(x, y);
            pixel.color = pixel.color + sample.color * weight;
            pixel.alpha += sample.alpha * weight;
        }
    }
    pixel.depth = depthAt(column + 0.5, row + 0.5);
    return pixel;
}

} // namespace

Picture renderScene()
{
    Picture scene(sceneWidth, sceneHeight);
    for (int row = 0; row < sceneHeight; ++row) {
        for (int column = 0; column < sceneWidth; ++column) {
            scene.at(column, row) = pixelAt(column, row);
        }
    }
    return scene;
}

} // namespace examples
