#include "platform/conversion/simplify.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <meshoptimizer.h>
#include <span>

namespace TOOLDATABUILDER {

namespace {

// Where the texture coordinates of one position differ, the texture is cut; a triangle across a cut would show a part
// of the picture that does not belong there. Which cuts the simplifier has to leave:
enum class CUTS { ALL, SMOOTH, NONE };  // SMOOTH: where the normals agree, for there it shows most

// The surface as the simplifier sees it: places, each with the vertices that stand there. Vertices of one position are
// one place unless a cut lies between them, so that a hard edge alone does not hold the surface together.
class PLACES {
public:
    PLACES(std::vector<std::uint32_t> const &indices, SIMPLIFIED_VERTICES const &source, CUTS cuts)
        : vertices(source), kept(source.uvs != nullptr ? cuts : CUTS::NONE)
    {
        members = indices;
        std::sort(members.begin(), members.end());
        members.erase(std::unique(members.begin(), members.end()), members.end());
        std::sort(members.begin(), members.end(), [this](std::uint32_t a, std::uint32_t b) {
            int const order = compare(position(a), position(b), 3);
            return order != 0 ? order < 0 : a < b;
        });
        place_of.resize(vertices.count);
        for (std::size_t first = 0, last = 0; first < members.size(); first = last) {
            while (last < members.size() && compare(position(members[last]), position(members[first]), 3) == 0)
                ++last;
            add_position(first, last);
        }
        starts.push_back(std::uint32_t(members.size()));
        corners.reserve(indices.size());
        for (std::uint32_t const index : indices)
            corners.push_back(place_of[index]);
    }

    std::size_t count() const { return starts.size() - 1; }
    std::span<std::uint32_t const> vertices_at(std::uint32_t place) const
    {
        return {members.data() + starts[place], members.data() + starts[place + 1]};
    }

    std::vector<float> positions;        // three a place
    std::vector<std::uint32_t> corners;  // the place of each corner

private:
    static int compare(float const *a, float const *b, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i)
            if (a[i] != b[i])
                return a[i] < b[i] ? -1 : 1;
        return 0;
    }
    float const *position(std::uint32_t vertex) const { return vertices.positions + 3 * std::size_t(vertex); }
    float const *uv(std::uint32_t vertex) const { return vertices.uvs + 2 * std::size_t(vertex); }
    bool is_cut_between(std::uint32_t a, std::uint32_t b) const
    {
        if (compare(uv(a), uv(b), 2) == 0)
            return false;
        float const *const n = vertices.normals + 3 * std::size_t(a), *const m = vertices.normals + 3 * std::size_t(b);
        constexpr float smooth = 0.9f;
        return kept == CUTS::ALL || n[0] * m[0] + n[1] * m[1] + n[2] * m[2] > smooth;
    }

    using PIECES = std::vector<std::vector<std::uint32_t>>;

    // The members from `first` up to `last`, which have one position, by their texture coordinates: each piece in
    // ascending order, and the pieces in that of their first members.
    PIECES pieces_of(std::size_t first, std::size_t last) const
    {
        std::vector<std::uint32_t> sorted(members.begin() + std::ptrdiff_t(first),
                                          members.begin() + std::ptrdiff_t(last));
        if (kept == CUTS::NONE || sorted.size() == 1)
            return {std::move(sorted)};
        auto const order = [&](std::uint32_t a, std::uint32_t b) { return compare(uv(a), uv(b), 2); };
        std::sort(sorted.begin(), sorted.end(), [&](std::uint32_t a, std::uint32_t b) {
            int const by_uv = order(a, b);
            return by_uv != 0 ? by_uv < 0 : a < b;
        });
        PIECES pieces;
        for (std::uint32_t const vertex : sorted) {
            if (pieces.empty() || order(pieces.back()[0], vertex) != 0)
                pieces.emplace_back();
            pieces.back().push_back(vertex);
        }
        std::sort(pieces.begin(), pieces.end(), [](auto const &a, auto const &b) { return a[0] < b[0]; });
        return pieces;
    }

    // Each piece comes to the first that no cut parts it from.
    PIECES merge(PIECES const &pieces) const
    {
        PIECES merged;
        for (auto const &piece : pieces) {
            auto const place = std::find_if(merged.begin(), merged.end(), [&](auto const &other) {
                return std::none_of(piece.begin(), piece.end(), [&](std::uint32_t a) {
                    return std::any_of(other.begin(), other.end(),
                                       [&](std::uint32_t b) { return is_cut_between(a, b); });
                });
            });
            auto &to = place != merged.end() ? *place : merged.emplace_back();
            to.insert(to.end(), piece.begin(), piece.end());
        }
        return merged;
    }

    // Makes places of the members from `first` up to `last`, which have one position. Those whose texture coordinates
    // are equal stay together; then whatever no cut lies between comes together.
    void add_position(std::size_t first, std::size_t last)
    {
        PIECES pieces = pieces_of(first, last);
        constexpr std::size_t most = 64;  // vertices that are compared with one another
        PIECES const merged = last - first <= most ? merge(pieces) : std::move(pieces);
        std::size_t at = first;
        for (auto const &place : merged) {
            starts.push_back(std::uint32_t(at));
            positions.insert(positions.end(), position(place[0]), position(place[0]) + 3);
            for (std::uint32_t const vertex : place) {
                place_of[vertex] = std::uint32_t(starts.size()) - 1;
                members[at++] = vertex;
            }
        }
    }

    SIMPLIFIED_VERTICES const &vertices;
    CUTS const kept;
    std::vector<std::uint32_t> place_of;         // by vertex
    std::vector<std::uint32_t> members, starts;  // of place p: members from starts[p] up to starts[p + 1]
};

// Unit length; zero for a triangle without area.
std::array<float, 3> face_normal(float const *positions, std::uint32_t const *triangle)
{
    float const *const a = positions + 3 * std::size_t(triangle[0]);
    float const *const b = positions + 3 * std::size_t(triangle[1]);
    float const *const c = positions + 3 * std::size_t(triangle[2]);
    std::array<double, 3> normal;
    for (std::size_t i = 0; i < 3; ++i) {
        std::size_t const j = (i + 1) % 3, k = (i + 2) % 3;
        normal[i] = (double(b[j]) - a[j]) * (double(c[k]) - a[k]) - (double(b[k]) - a[k]) * (double(c[j]) - a[j]);
    }
    double const length = std::sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
    double const factor = length > 0 ? 1 / length : 0;
    return {float(normal[0] * factor), float(normal[1] * factor), float(normal[2] * factor)};
}

float uv_distance(float const *uvs, std::uint32_t a, std::uint32_t b)
{
    float const *const at_a = uvs + 2 * std::size_t(a), *const at_b = uvs + 2 * std::size_t(b);
    return std::hypot(at_a[0] - at_b[0], at_a[1] - at_b[1]);
}

// Replaces the triangle's places by vertices: the normal near that of the face, and among those that do not differ much
// in it, the texture coordinate near those of the other corners. The corner with the fewest choices leads.
void choose_vertices(std::uint32_t *triangle, PLACES const &places, SIMPLIFIED_VERTICES const &vertices)
{
    struct CORNER {
        std::uint32_t *index;
        std::span<std::uint32_t const> choices;
    };
    std::array<CORNER, 3> corners;
    for (std::size_t i = 0; i < 3; ++i)
        corners[i] = {triangle + i, places.vertices_at(triangle[i])};
    constexpr std::size_t most_choices = 256;
    for (CORNER &corner : corners)
        corner.choices = corner.choices.first(std::min(corner.choices.size(), most_choices));
    if (corners[0].choices.size() + corners[1].choices.size() + corners[2].choices.size() == 3) {
        for (CORNER const &corner : corners)
            *corner.index = corner.choices[0];
        return;
    }
    std::array<float, 3> const face = face_normal(places.positions.data(), triangle);
    std::stable_sort(corners.begin(), corners.end(),
                     [](CORNER const &a, CORNER const &b) { return a.choices.size() < b.choices.size(); });
    for (std::size_t i = 0; i < 3; ++i) {
        float least = INFINITY;
        std::uint32_t best = corners[i].choices[0];
        for (std::uint32_t const vertex : corners[i].choices) {
            float const *const normal = vertices.normals + 3 * std::size_t(vertex);
            float away = 0;
            for (std::size_t done = 0; vertices.uvs != nullptr && done < i; ++done)
                away += uv_distance(vertices.uvs, vertex, *corners[done].index);
            constexpr float steps = 16;  // in which normals are told apart
            float const turned = 1 - (normal[0] * face[0] + normal[1] * face[1] + normal[2] * face[2]);
            float const cost = std::floor(steps * turned) + away / (1 + away);
            if (cost < least) {
                least = cost;
                best = vertex;
            }
        }
        *corners[i].index = best;
    }
}

std::vector<std::uint32_t> simplified_once(std::vector<std::uint32_t> const &indices, std::size_t wanted,
                                           SIMPLIFIED_VERTICES const &vertices, CUTS cuts, float error)
{
    PLACES const places(indices, vertices, cuts);
    std::vector<std::uint32_t> made(indices.size());
    made.resize(meshopt_simplify(made.data(), places.corners.data(), places.corners.size(), places.positions.data(),
                                 places.count(), 3 * sizeof(float), wanted, error, 0, nullptr));
    for (std::size_t i = 0; i < made.size(); i += 3)
        choose_vertices(made.data() + i, places, vertices);
    return made;
}

}  // namespace

std::vector<std::uint32_t> simplified(std::vector<std::uint32_t> const &indices, std::size_t wanted,
                                      SIMPLIFIED_VERTICES const &vertices)
{
    // As much as goes without harm first; what is then still too much costs parts of the texture, in the end the shape.
    struct {
        CUTS cuts;
        float error;  // of the mesh's size
    } const steps[] = {{CUTS::ALL, 0.01f}, {CUTS::SMOOTH, 0.01f}, {CUTS::NONE, 1}};
    std::vector<std::uint32_t> made = indices;
    for (auto const &step : steps)
        if (made.size() > wanted)
            made = simplified_once(made, wanted, vertices, step.cuts, step.error);
    return made;
}

}  // namespace TOOLDATABUILDER
