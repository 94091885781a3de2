#include "examples/shape.h"

#include <array>

namespace EXAMPLES {

void SHAPE::polygon(std::span<const VEX2_VECTOR> points, TEXTURE_FIT const &fit)
{
    VEX2_VECTOR area;  // twice the area, along the normal
    for (std::size_t i = 2; i < points.size(); ++i)
        area = area + cross(points[i - 1] - points[0], points[i] - points[0]);
    if (length(area) < 1e-6f)
        return;
    VEX2_VECTOR const normal = unit(area);
    // The part of `up` that lies in the face; a face across it takes another direction.
    VEX2_VECTOR up = fit.up - normal * dot(fit.up, normal);
    if (length(up) < 0.01f)
        up = std::fabs(normal.z) < 0.9f ? VEX2_VECTOR{0, 0, -1} - normal * -normal.z : VEX2_VECTOR{1, 0, 0};
    up = unit(up);
    VEX2_VECTOR const right = cross(up, normal);

    auto const first = std::uint32_t(corners.size());
    for (VEX2_VECTOR const &point : points)
        corners.push_back({point, normal, dot(point, right) / fit.metres, dot(point, up) / fit.metres});
    for (std::uint32_t i = 2; i < points.size(); ++i)
        indices.insert(indices.end(), {first, first + i - 1, first + i});
}

void SHAPE::extrude(std::span<const VEX2_VECTOR> outline, VEX2_VECTOR const &step, TEXTURE_FIT const &fit)
{
    polygon(outline, fit);
    std::vector<VEX2_VECTOR> far_side;
    for (std::size_t i = outline.size(); i-- > 0;)
        far_side.push_back(outline[i] + step);
    polygon(far_side, fit);
    for (std::size_t i = 0; i < outline.size(); ++i) {
        VEX2_VECTOR const &a = outline[i];
        VEX2_VECTOR const &b = outline[(i + 1) % outline.size()];
        polygon({b, a, a + step, b + step}, fit);
    }
}

void SHAPE::box(VEX2_VECTOR const &low, VEX2_VECTOR const &high, TEXTURE_FIT const &fit)
{
    std::array<VEX2_VECTOR, 4> const front = {
        {{low.x, low.y, high.z}, {high.x, low.y, high.z}, {high.x, high.y, high.z}, {low.x, high.y, high.z}}};
    extrude(front, {0, 0, low.z - high.z}, fit);
}

// The direction of a loft's skin at a given angle, seen from above counter-clockwise from x.
static VEX2_VECTOR outwards(RING const &ring, float cosine, float sine)
{
    return {ring.radius_x * cosine, 0, -ring.radius_z * sine};
}

void SHAPE::loft(std::span<const RING> rings, unsigned sides, EDGES edges, TEXTURE_FIT const &fit)
{
    float widest = 0;
    for (RING const &ring : rings)
        widest = std::fmax(widest, std::fmax(ring.radius_x, ring.radius_z));
    float const turns = std::fmax(1, std::round(2 * pi * widest / fit.metres));

    // One row of corners; the skin rises there from ring `below` to ring `above`.
    float height = 0;
    auto const add_row = [&](RING const &ring, RING const &below, RING const &above) {
        for (unsigned side = 0; side <= sides; ++side) {
            float const angle = 2 * pi * float(side % sides) / float(sides);
            float const cosine = std::cos(angle), sine = std::sin(angle);
            VEX2_VECTOR const rise =
                above.centre + outwards(above, cosine, sine) - below.centre - outwards(below, cosine, sine);
            // A ring of radius 0 has a direction around it all the same.
            float const round_x = std::fmax(ring.radius_x, 0.001f), round_z = std::fmax(ring.radius_z, 0.001f);
            VEX2_VECTOR const around = {-round_x * sine, 0, -round_z * cosine};
            corners.push_back({ring.centre + outwards(ring, cosine, sine), unit(cross(around, rise)),
                               turns * float(side) / float(sides), height / fit.metres});
        }
    };
    auto const add_band = [&](bool closed_below, bool closed_above) {
        std::uint32_t const row = sides + 1;
        auto const low = std::uint32_t(corners.size()) - 2 * row;
        for (std::uint32_t i = low; i < low + sides; ++i) {
            if (!closed_below)
                indices.insert(indices.end(), {i, i + 1, i + row + 1});
            if (!closed_above)
                indices.insert(indices.end(), {i, i + row + 1, i + row});
            // A band between two such rings would have no surface; shapes do not ask for one.
        }
    };
    auto const is_point = [](RING const &ring) { return ring.radius_x == 0 && ring.radius_z == 0; };

    for (std::size_t i = 0; i + 1 < rings.size(); ++i) {
        RING const &low = rings[i], &high = rings[i + 1];
        if (edges == EDGES::HARD)
            add_row(low, low, high);
        else if (i == 0)
            add_row(low, low, high);
        VEX2_VECTOR const way = high.centre - low.centre;
        height += std::hypot(length(way), high.radius_x - low.radius_x);
        RING const &next = edges == EDGES::SMOOTH && i + 2 < rings.size() ? rings[i + 2] : high;
        add_row(high, low, next);
        add_band(is_point(low), is_point(high));
    }
}

void SHAPE::append(SHAPE const &other, VEX2_MATRIX const &placement)
{
    auto const turned = [&](VEX2_VECTOR const &v) {
        auto const row = [&](unsigned r) {
            return placement[r][0] * v.x + placement[r][1] * v.y + placement[r][2] * v.z;
        };
        return VEX2_VECTOR{row(0), row(1), row(2)};
    };
    VEX2_VECTOR const place = {placement[0][3], placement[1][3], placement[2][3]};
    auto const first = std::uint32_t(corners.size());
    for (CORNER const &corner : other.corners)
        corners.push_back({turned(corner.position) + place, turned(corner.normal), corner.u, corner.v});
    for (std::uint32_t index : other.indices)
        indices.push_back(first + index);
}

VEX2_MATRIX placed(float degrees, VEX2_VECTOR const &place)
{
    float const c = std::cos(degrees * pi / 180), s = std::sin(degrees * pi / 180);
    return {{{c, 0, s, place.x}, {0, 1, 0, place.y}, {-s, 0, c, place.z}}};
}

VEX2_MATRIX tipped(float degrees, VEX2_VECTOR const &place)
{
    float const c = std::cos(degrees * pi / 180), s = std::sin(degrees * pi / 180);
    return {{{1, 0, 0, place.x}, {0, c, -s, place.y}, {0, s, c, place.z}}};
}

}  // namespace EXAMPLES
