#include "platform/engine/renderer.h"

#include "foundation/fp_state.h"
#include "foundation/messages.h"
#include "support/camera/camera.h"
#include "support/camera/view_volume.h"
#include "support/parallel/parallel_range.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>

namespace KESTREL {

namespace {

using SUPPORT::VECTOR3;

constexpr unsigned most_samples = 16;

// The view as the renderer walks it. Positions run linearly over the picture, on the near plane as on the far one.
struct SIGHT {
    struct RECTANGLE {
        VECTOR3 corner, across, down;  // the upper left corner of the picture, and its sides
        VECTOR3 at(float x, float y) const { return corner + across * x + down * y; }
    };
    RECTANGLE near, far;
    VECTOR3 right, up, towards;  // the axes of normals
    VECTOR3 eye, forward;
    float target_distance;
    float near_pixel, far_pixel;  // widths, metres
};

VECTOR3 from_clip(SUPPORT::MATRIX44 const &to_world, float x, float y, float depth)
{
    SUPPORT::VECTOR4 const point = to_world * SUPPORT::VECTOR4{x, y, depth, 1};
    return VECTOR3{point.x, point.y, point.z} / point.w;
}

// The camera's x runs to the left of a right-handed space, so the picture begins where x is 1.
SIGHT::RECTANGLE rectangle(SUPPORT::MATRIX44 const &to_world, float depth)
{
    VECTOR3 const corner = from_clip(to_world, 1, 1, depth);
    return {corner, from_clip(to_world, -1, 1, depth) - corner, from_clip(to_world, 1, -1, depth) - corner};
}

SIGHT sight_of(SUPPORT::CAMERA const &camera, unsigned width)
{
    SUPPORT::VIEW_VOLUME volume;
    camera.view_volume(volume);
    SUPPORT::MATRIX44 const to_world = inverse_or_itself(volume.view_projection);
    SIGHT sight;
    sight.near = rectangle(to_world, 0);
    sight.far = rectangle(to_world, 1);
    sight.right = normalised(sight.near.across);
    sight.up = -normalised(sight.near.down);
    sight.towards = cross(sight.right, sight.up);
    sight.eye = camera.eye();
    sight.forward = camera.forward();
    sight.target_distance = length(camera.target() - camera.eye());
    sight.near_pixel = length(sight.near.across) / float(width);
    sight.far_pixel = length(sight.far.across) / float(width);
    return sight;
}

// Places within a pixel: evenly spaced in x; in y by the digits of the number turned around.
struct PATTERN {
    unsigned count;
    float x[most_samples], y[most_samples];

    explicit PATTERN(unsigned samples) : count(std::clamp(samples, 1u, most_samples))
    {
        float const step = 1 / float(count);
        for (unsigned i = 0; i < count; ++i) {
            float turned = 0, weight = 0.5f;
            for (unsigned digits = i; digits != 0; digits /= 2, weight /= 2)
                turned += float(digits % 2) * weight;
            x[i] = (float(i) + 0.5f) * step;
            y[i] = turned + 0.5f * step;
        }
    }
};

// Normals that are seen face the viewer, as textures have to take for granted that keep two parts of them. The back of
// a leaf has the opposite normal of its front. Where normals are bent on purpose, to make one round crown of many
// leaves, or reach around an edge, only the part along the sight is turned.
VECTOR3 facing(VECTOR3 const &normal, VECTOR3 const &triangle_normal, VECTOR3 const &direction)
{
    float const away = dot(normal, direction);
    if (!(away > 0))
        return normal;
    bool const is_bent = dot(normal, triangle_normal) < 0.7f;
    return dot(triangle_normal, direction) > 0 && !is_bent ? -normal : normal - direction * (2 * away);
}

class RENDERER {
public:
    RENDERER(RAY_SCENE const &from, SUPPORT::CAMERA const &camera, unsigned samples, FILM &to)
        : scene(from), film(to), sight(sight_of(camera, to.width())), pattern(samples)
    {}

    void render_row(unsigned y) const
    {
        for (unsigned x = 0; x < film.width(); ++x)
            film.put(x, y, sum_of(x, y));
    }

private:
    PIXEL_SUM sum_of(unsigned x, unsigned y) const
    {
        PIXEL_SUM sum;
        sum.samples = pattern.count;
        for (unsigned first = 0; first < pattern.count; first += RAY_PACKET::size) {
            RAY_PACKET rays;
            rays.count = std::min(pattern.count - first, RAY_PACKET::size);
            for (unsigned i = 0; i < RAY_PACKET::size; ++i)
                aim(x, y, std::min(first + i, pattern.count - 1), i, rays);
            RAY_HIT hits[RAY_PACKET::size];
            scene.cast(rays, hits);
            for (unsigned i = 0; i < rays.count; ++i)
                if (hits[i].instance != RAY_HIT::none)
                    add(rays, i, hits[i], sum);
        }
        return sum;
    }

    void aim(unsigned x, unsigned y, unsigned sample, unsigned i, RAY_PACKET &rays) const
    {
        float const across = (float(x) + pattern.x[sample]) / float(film.width());
        float const down = (float(y) + pattern.y[sample]) / float(film.height());
        VECTOR3 const from = sight.near.at(across, down), way = sight.far.at(across, down) - from;
        VECTOR3 const direction = normalised(way);
        float const origin[3] = {from.x, from.y, from.z}, unit[3] = {direction.x, direction.y, direction.z};
        for (unsigned c = 0; c < 3; ++c) {
            rays.origins[c][i] = origin[c];
            rays.directions[c][i] = unit[c];
        }
        rays.reach[i] = length(way);
        rays.thresholds[i] = (float(sample) + 0.5f) / float(pattern.count);
    }

    void add(RAY_PACKET const &rays, unsigned i, RAY_HIT const &hit, PIXEL_SUM &sum) const
    {
        RENDER_PART const &part = scene.part_of(hit);
        VECTOR3 const direction = {rays.directions[0][i], rays.directions[1][i], rays.directions[2][i]};
        VECTOR3 const origin = {rays.origins[0][i], rays.origins[1][i], rays.origins[2][i]};
        float const behind = hit.distance / rays.reach[i];
        // Half a pixel, since several samples share it.
        float const pixel = 0.5f * (sight.near_pixel + (sight.far_pixel - sight.near_pixel) * behind);

        float colour[3], seen[3], flat[3];
        part.colour(hit.place, pixel, colour);
        part.normal(hit.place, pixel, seen);
        scene.turn(hit, seen);
        part.triangle_normal(hit.place.triangle, flat);
        scene.turn(hit, flat);
        VECTOR3 const normal = facing(normalised(VECTOR3{seen[0], seen[1], seen[2]}),
                                      normalised(VECTOR3{flat[0], flat[1], flat[2]}), direction);
        VECTOR3 const point = origin + direction * hit.distance;

        ++sum.hits;
        for (unsigned c = 0; c < 3; ++c)
            sum.colour[c] += colour[c];
        sum.normal[0] += dot(normal, sight.right);
        sum.normal[1] += dot(normal, sight.up);
        sum.normal[2] += dot(normal, sight.towards);
        sum.height += std::clamp(1 - dot(point - sight.eye, sight.forward) / sight.target_distance, 0.0f, 1.0f);
    }

    RAY_SCENE const &scene;
    FILM &film;
    SIGHT const sight;
    PATTERN const pattern;
};

}  // namespace

bool render(RAY_SCENE const &scene, SUPPORT::CAMERA const &camera, unsigned samples, FILM &film)
{
    KN::FpStateScope const fixed_arithmetic;  // as the workers have it
    RENDERER const renderer(scene, camera, samples, film);
    std::atomic<bool> goes_on = true;
    std::thread::id const caller = std::this_thread::get_id();
    SUPPORT::parallel_for({0, film.height()}, [&](SUPPORT::INDEX_RANGE const &rows) {
        for (unsigned y = rows.begin; y < rows.end; ++y) {
            if (std::this_thread::get_id() == caller && !KN::goes_on())  // only the caller's thread knows
                goes_on.store(false, std::memory_order_relaxed);
            if (!goes_on.load(std::memory_order_relaxed))
                return;
            renderer.render_row(y);
        }
    });
    if (!goes_on)
        return false;
    film.spread_colours();
    return true;
}

}  // namespace KESTREL
