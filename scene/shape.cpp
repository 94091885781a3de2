#include "scene/shape.h"

#include "scene/define_record.h"

#include <cmath>

namespace VEX2_LOADER {

VEX2_DEFINE_SERIAL(VEX2_SPLINE)
VEX2_DEFINE_SERIAL(VEX2_ANIMATED_SPLINE)
VEX2_DEFINE_ANIMATED(VEX2_ANIMATED_SPLINE)
VEX2_DEFINE_SERIAL(VEX2_SHAPE)
VEX2_DEFINE_ANIMATED(VEX2_SHAPE)

namespace {

constexpr std::uint32_t highest_degree = 3;
constexpr float binomial[highest_degree + 1][highest_degree + 1] = {{1}, {1, 1}, {1, 2, 1}, {1, 3, 3, 1}};

float bernstein(std::uint32_t degree, std::uint32_t i, float u)
{
    return binomial[degree][i] * std::pow(u, float(i)) * std::pow(1 - u, float(degree - i));
}

void add_scaled(VEX2_VECTOR &sum, float factor, VEX2_VECTOR const &step)
{
    sum.x += factor * step.x;
    sum.y += factor * step.y;
    sum.z += factor * step.z;
}

// `point(i)` gives the i-th point of the segment.
template <class POINT>
VEX2_VECTOR bezier_position(std::uint32_t degree, float u, POINT const &point)
{
    VEX2_VECTOR sum;
    for (std::uint32_t i = 0; i <= degree; ++i)
        add_scaled(sum, bernstein(degree, i, u), point(i));
    return sum;
}

// The sum that consumers of shapes know as the tangent. It weighs the steps between points as the position weighs the
// points, so it is not the derivative.
template <class POINT>
VEX2_VECTOR bezier_tangent(std::uint32_t degree, float u, POINT const &point)
{
    VEX2_VECTOR sum;
    for (std::uint32_t i = 0; i < degree; ++i) {
        VEX2_VECTOR const from = point(i);
        VEX2_VECTOR const to = point(i + 1);
        add_scaled(sum, bernstein(degree, i, u), {to.x - from.x, to.y - from.y, to.z - from.z});
    }
    return sum;
}

}  // namespace

float VEX2_SPLINE_BASE::length() const
{
    float sum = 0;
    for (VEX2_SPLINE_SEGMENT const &segment : segments)
        sum += segment.length;
    return sum;
}

bool VEX2_SPLINE_BASE::locate(float t, std::uint32_t point_count, PLACE &place) const
{
    std::uint32_t const count = segments.count;
    if (count == 0)
        return false;
    float const s = t / (1 / float(count));
    // A t below 0 or that is no number continues the first segment.
    std::uint32_t const index = s >= float(count) ? count - 1 : s > 0 ? std::uint32_t(s) : 0;
    std::uint64_t first_point = 0;
    for (std::uint32_t i = 0; i < index; ++i)
        first_point += segments[i].degree;
    std::uint32_t const degree = segments[index].degree;
    if (degree > highest_degree || first_point + degree >= point_count)
        return false;
    place = {degree, std::uint32_t(first_point), s - float(index)};
    return true;
}

void VEX2_SPLINE::position_at(float t, VEX2_VECTOR &out) const
{
    if (PLACE place; locate(t, points.count, place))
        out = bezier_position(place.degree, place.u, [&](std::uint32_t i) { return points[place.first_point + i]; });
}

void VEX2_SPLINE::tangent_at(float t, VEX2_VECTOR &out) const
{
    if (PLACE place; locate(t, points.count, place))
        out = bezier_tangent(place.degree, place.u, [&](std::uint32_t i) { return points[place.first_point + i]; });
}

// A point without a channel counts as the origin.
static VEX2_VECTOR point_now(VEX2_VECTOR_CHANNEL const *point) { return point ? point->value() : VEX2_VECTOR{}; }

void VEX2_ANIMATED_SPLINE::position_at(float t, VEX2_VECTOR &out) const
{
    if (PLACE place; locate(t, points.count, place))
        out = bezier_position(place.degree, place.u,
                              [&](std::uint32_t i) { return point_now(points[place.first_point + i]); });
}

void VEX2_ANIMATED_SPLINE::tangent_at(float t, VEX2_VECTOR &out) const
{
    if (PLACE place; locate(t, points.count, place))
        out = bezier_tangent(place.degree, place.u,
                             [&](std::uint32_t i) { return point_now(points[place.first_point + i]); });
}

}  // namespace VEX2_LOADER
