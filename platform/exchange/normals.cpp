#include "platform/exchange/normals.h"

#include "foundation/containers.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

using VEX2_LOADER::VEX2_VECTOR;

namespace {

struct FACE {
    double area[3];  // along the normal, as long as twice the triangle's area
    double unit[3];  // zero for a triangle without area
};

double dot(double const (&a)[3], double const (&b)[3]) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

FACE face_of(VEX2_VECTOR const &p, VEX2_VECTOR const &q, VEX2_VECTOR const &r)
{
    double const a[3] = {double(q.x) - p.x, double(q.y) - p.y, double(q.z) - p.z};
    double const b[3] = {double(r.x) - p.x, double(r.y) - p.y, double(r.z) - p.z};
    FACE face = {{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]}, {}};
    double const length = std::sqrt(dot(face.area, face.area));
    if (length > 0 && std::isfinite(length))
        for (int i = 0; i < 3; ++i)
            face.unit[i] = face.area[i] / length;
    else
        face = {};
    return face;
}

bool has_area(FACE const &face) { return dot(face.unit, face.unit) > 0; }

}  // namespace

void generate_normals(std::span<VEX2_VECTOR const> positions, std::span<std::uint32_t const> corners,
                      float crease_cosine, std::span<VEX2_VECTOR> normals)
{
    KN_STD::VECTOR<FACE> faces(corners.size() / 3);
    for (std::size_t i = 0; i < faces.size(); ++i)
        faces[i] = face_of(positions[corners[3 * i]], positions[corners[3 * i + 1]], positions[corners[3 * i + 2]]);

    // Corners side by side that meet.
    auto const place = [&](std::uint32_t corner) {
        VEX2_VECTOR const &p = positions[corners[corner]];
        return std::tuple(p.x, p.y, p.z);
    };
    KN_STD::VECTOR<std::uint32_t> order(corners.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return place(a) < place(b); });

    for (std::size_t first = 0, last; first < order.size(); first = last) {
        for (last = first + 1; last < order.size() && place(order[last]) == place(order[first]); ++last) {
        }
        for (std::size_t i = first; i < last; ++i) {
            FACE const &own = faces[order[i] / 3];
            double sum[3] = {own.area[0], own.area[1], own.area[2]};
            if (crease_cosine < 1 || !has_area(own)) {
                sum[0] = sum[1] = sum[2] = 0;
                for (std::size_t k = first; k < last; ++k) {
                    FACE const &other = faces[order[k] / 3];
                    if (!has_area(own) || dot(own.unit, other.unit) >= double(crease_cosine))
                        for (int axis = 0; axis < 3; ++axis)
                            sum[axis] += other.area[axis];
                }
            }
            double const length = std::sqrt(dot(sum, sum));
            normals[order[i]] =
                length > 0 ? VEX2_VECTOR{float(sum[0] / length), float(sum[1] / length), float(sum[2] / length)}
                           : VEX2_VECTOR{0, 1, 0};
        }
    }
}
