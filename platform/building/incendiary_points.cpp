// Dart throwing: places are drawn evenly over the area, one that keeps its distance from all points so far becomes a
// point. A grid of cells as wide as the distance keeps the comparisons to the 27 cells around. As many darts are thrown
// as fill the surface to a few hundredths of what it can hold.

#include "platform/building/incendiary_points.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace CORVANEUTILITY {

namespace {

using POINT = std::array<float, 3>;

// Equally spread over [0, 1); the same on every machine.
class RANDOM {
public:
    double next()
    {
        state += 0x9e3779b97f4a7c15u;
        std::uint64_t mixed = state;
        mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebu;
        return double((mixed ^ (mixed >> 31)) >> 11) * 0x1p-53;
    }

private:
    std::uint64_t state = 1;
};

class SURFACE {
public:
    explicit SURFACE(std::vector<GLTF::GEOMETRY> const &meshes)
    {
        for (GLTF::GEOMETRY const &mesh : meshes) {
            for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
                float const *const a = &mesh.positions[std::size_t(mesh.indices[i]) * 3];
                float const *const b = &mesh.positions[std::size_t(mesh.indices[i + 1]) * 3];
                float const *const c = &mesh.positions[std::size_t(mesh.indices[i + 2]) * 3];
                double const size = area_of(a, b, c);
                if (!(size > 0) || !std::isfinite(size))
                    continue;
                total += size;
                triangles.push_back({a, b, c});
                area_up_to.push_back(total);
            }
        }
    }

    double area() const { return total; }

    POINT draw(RANDOM &random) const
    {
        auto const place = std::ranges::upper_bound(area_up_to, random.next() * total);
        std::size_t const index = std::min(std::size_t(place - area_up_to.begin()), triangles.size() - 1);
        auto const &[a, b, c] = triangles[index];
        double const root = std::sqrt(random.next()), share = random.next();
        double const of_a = 1 - root, of_b = root * (1 - share), of_c = root * share;
        POINT point;
        for (std::size_t i = 0; i < 3; ++i)
            point[i] = float(of_a * double(a[i]) + of_b * double(b[i]) + of_c * double(c[i]));
        return point;
    }

private:
    static double area_of(float const *a, float const *b, float const *c)
    {
        double u[3], v[3];
        for (int i = 0; i < 3; ++i) {
            u[i] = double(b[i]) - double(a[i]);
            v[i] = double(c[i]) - double(a[i]);
        }
        double const x = u[1] * v[2] - u[2] * v[1], y = u[2] * v[0] - u[0] * v[2], z = u[0] * v[1] - u[1] * v[0];
        return std::sqrt(x * x + y * y + z * z) / 2;
    }

    std::vector<std::array<float const *, 3>> triangles;
    std::vector<double> area_up_to;  // of the triangles up to and with this one
    double total = 0;
};

class KEPT_POINTS {
public:
    explicit KEPT_POINTS(double distance) : apart(distance) {}

    bool has_room(POINT const &point) const
    {
        CELL const middle = cell_of(point);
        for (std::int64_t x = -1; x <= 1; ++x)
            for (std::int64_t y = -1; y <= 1; ++y)
                for (std::int64_t z = -1; z <= 1; ++z)
                    if (is_close_in({middle.x + x, middle.y + y, middle.z + z}, point))
                        return false;
        return true;
    }

    void keep(POINT const &point)
    {
        cells[cell_of(point)].push_back(points.size());
        points.push_back(point);
    }

    std::vector<POINT> points;

private:
    struct CELL {
        std::int64_t x, y, z;
        bool operator==(CELL const &) const = default;
    };
    struct CELL_HASH {
        std::size_t operator()(CELL const &cell) const
        {
            return std::size_t(cell.x) * 0x9e3779b97f4a7c15u ^ std::size_t(cell.y) * 0xc2b2ae3d27d4eb4fu ^
                   std::size_t(cell.z) * 0x165667b19e3779f9u;
        }
    };

    CELL cell_of(POINT const &point) const
    {
        auto const number = [&](float part) {
            return std::int64_t(std::floor(std::clamp(double(part) / apart, -1e18, 1e18)));
        };
        return {number(point[0]), number(point[1]), number(point[2])};
    }

    bool is_close_in(CELL const &cell, POINT const &point) const
    {
        auto const place = cells.find(cell);
        if (place == cells.end())
            return false;
        return std::ranges::any_of(place->second, [&](std::size_t index) {
            double square = 0;
            for (std::size_t i = 0; i < 3; ++i) {
                double const step = double(point[i]) - double(points[index][i]);
                square += step * step;
            }
            return square < apart * apart;
        });
    }

    double apart;
    std::unordered_map<CELL, std::vector<std::size_t>, CELL_HASH> cells;
};

}  // namespace

std::vector<POINT> incendiary_points(std::vector<GLTF::GEOMETRY> const &meshes, float radius)
{
    if (!(radius > 0) || !std::isfinite(radius))
        return {};
    SURFACE const surface(meshes);
    if (!(surface.area() > 0) || !std::isfinite(surface.area()))
        return {};

    double const widest = std::sqrt(surface.area() / double(most_incendiary_points));
    double const apart = std::max(double(radius), widest);
    constexpr double darts_a_place = 24;  // a place: the square of the distance
    double const darts = 64 + darts_a_place * surface.area() / (apart * apart);
    KEPT_POINTS kept(apart);
    RANDOM random;
    for (double thrown = 0; thrown < darts && kept.points.size() < most_incendiary_points; ++thrown) {
        POINT const point = surface.draw(random);
        if (kept.has_room(point))
            kept.keep(point);
    }
    return std::move(kept.points);
}

}  // namespace CORVANEUTILITY
