// Both data files begin with 32 bytes: u32 columns, u32 rows, then f32 x and z of the first sample, f32 step in x and
// in z, f32 least and greatest value; then the samples, row by row along z. Heights are f32, metres; of overlapping
// surfaces the uppermost counts, a sample off the mesh takes the height of the nearest sample on it. Deltas are f32
// too, one a cell of four samples: how far the mesh's vertices in it lie above (or below) the height map at most.

#include "platform/conversion/terrain_tile.h"

#include "foundation/finished_file.h"
#include "foundation/messages.h"
#include "platform/conversion/xml_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>

namespace TOOLDATABUILDER {

namespace {

constexpr unsigned samples = 257;  // a side
constexpr float nothing = -std::numeric_limits<float>::infinity();

struct GRID {
    float x = 0, z = 0, step_x = 0, step_z = 0;
    unsigned columns = samples, rows = samples;
    std::vector<float> values;

    float &at(unsigned column, unsigned row) { return values[std::size_t(row) * columns + column]; }
    float at(unsigned column, unsigned row) const { return values[std::size_t(row) * columns + column]; }
};

float const *corner(GLTF::GEOMETRY const &mesh, std::size_t i)
{
    return &mesh.positions[std::size_t(mesh.indices[i]) * 3];
}

// The grid over the box of all triangles; false if they have no extent from above.
bool lay_grid(std::vector<GLTF::GEOMETRY> const &meshes, GRID &grid)
{
    float least[2] = {INFINITY, INFINITY}, greatest[2] = {-INFINITY, -INFINITY};
    for (GLTF::GEOMETRY const &mesh : meshes) {
        for (std::size_t i = 0; i < mesh.indices.size(); ++i) {
            float const *const p = corner(mesh, i);
            least[0] = std::min(least[0], p[0]);
            least[1] = std::min(least[1], p[2]);
            greatest[0] = std::max(greatest[0], p[0]);
            greatest[1] = std::max(greatest[1], p[2]);
        }
    }
    grid.x = least[0];
    grid.z = least[1];
    grid.step_x = (greatest[0] - least[0]) / float(samples - 1);
    grid.step_z = (greatest[1] - least[1]) / float(samples - 1);
    grid.values.assign(std::size_t(samples) * samples, nothing);
    return grid.step_x > 0 && grid.step_z > 0 && std::isfinite(grid.step_x) && std::isfinite(grid.step_z);
}

// The samples from `least` to `greatest`, one more to be sure; both within the grid.
std::pair<unsigned, unsigned> span(float least, float greatest, float start, float step)
{
    auto const number = [&](float value, float margin) {
        return unsigned(std::clamp((value - start) / step + margin, 0.0f, float(samples - 1)));
    };
    return {number(least, 0), number(greatest, 1)};
}

void raise_triangle(float const *a, float const *b, float const *c, GRID &grid)
{
    double const area = (double(b[0]) - double(a[0])) * (double(c[2]) - double(a[2])) -
                        (double(c[0]) - double(a[0])) * (double(b[2]) - double(a[2]));
    if (area == 0)
        return;
    auto const [first_column, last_column] =
        span(std::min({a[0], b[0], c[0]}), std::max({a[0], b[0], c[0]}), grid.x, grid.step_x);
    auto const [first_row, last_row] =
        span(std::min({a[2], b[2], c[2]}), std::max({a[2], b[2], c[2]}), grid.z, grid.step_z);
    for (unsigned row = first_row; row <= last_row; ++row) {
        for (unsigned column = first_column; column <= last_column; ++column) {
            double const x = double(grid.x) + double(column) * double(grid.step_x) - double(a[0]);
            double const z = double(grid.z) + double(row) * double(grid.step_z) - double(a[2]);
            double const of_b = (x * (double(c[2]) - double(a[2])) - (double(c[0]) - double(a[0])) * z) / area;
            double const of_c = ((double(b[0]) - double(a[0])) * z - x * (double(b[2]) - double(a[2]))) / area;
            constexpr double edge = -1e-5;  // samples on an edge belong to both sides
            if (of_b < edge || of_c < edge || of_b + of_c > 1 - edge)
                continue;
            double const height =
                double(a[1]) + of_b * (double(b[1]) - double(a[1])) + of_c * (double(c[1]) - double(a[1]));
            grid.at(column, row) = std::max(grid.at(column, row), float(height));
        }
    }
}

// Ring by ring outwards, the samples that have no height take the mean of their neighbours that have one. False if none
// has.
bool fill_holes(GRID &grid)
{
    std::vector<std::size_t> empty;
    for (std::size_t i = 0; i < grid.values.size(); ++i)
        if (grid.values[i] == nothing)
            empty.push_back(i);
    if (empty.size() == grid.values.size())
        return false;
    while (!empty.empty()) {
        std::vector<std::pair<std::size_t, float>> filled;
        std::vector<std::size_t> left;
        for (std::size_t const i : empty) {
            unsigned const column = unsigned(i % samples), row = unsigned(i / samples);
            float sum = 0, count = 0;
            for (unsigned r = row - (row > 0); r <= std::min(row + 1, samples - 1); ++r) {
                for (unsigned c = column - (column > 0); c <= std::min(column + 1, samples - 1); ++c) {
                    if (grid.at(c, r) != nothing) {
                        sum += grid.at(c, r);
                        count += 1;
                    }
                }
            }
            if (count > 0)
                filled.emplace_back(i, sum / count);
            else
                left.push_back(i);
        }
        for (auto const &[i, height] : filled)
            grid.values[i] = height;
        empty.swap(left);
    }
    return true;
}

// Per cell the greatest departure of a vertex from the map between its four samples.
GRID departures(std::vector<GLTF::GEOMETRY> const &meshes, GRID const &heights)
{
    GRID delta = heights;
    delta.columns = delta.rows = samples - 1;
    delta.values.assign(std::size_t(delta.columns) * delta.rows, 0.0f);
    for (GLTF::GEOMETRY const &mesh : meshes) {
        for (std::size_t i = 0; i < mesh.indices.size(); ++i) {
            float const *const p = corner(mesh, i);
            float const x = std::clamp((p[0] - heights.x) / heights.step_x, 0.0f, float(samples - 1));
            float const z = std::clamp((p[2] - heights.z) / heights.step_z, 0.0f, float(samples - 1));
            unsigned const column = std::min(unsigned(x), samples - 2), row = std::min(unsigned(z), samples - 2);
            float const u = x - float(column), v = z - float(row);
            float const near = heights.at(column, row) * (1 - u) + heights.at(column + 1, row) * u;
            float const far = heights.at(column, row + 1) * (1 - u) + heights.at(column + 1, row + 1) * u;
            float const departure = p[1] - (near * (1 - v) + far * v);
            float &greatest = delta.at(column, row);
            if (std::abs(departure) > std::abs(greatest))
                greatest = departure;
        }
    }
    return delta;
}

bool write_grid(GRID const &grid, KN::String const &path, KN::String &error)
{
    auto const [least, greatest] = std::ranges::minmax_element(grid.values);
    std::uint32_t const counts[2] = {grid.columns, grid.rows};
    float const measures[6] = {grid.x, grid.z, grid.step_x, grid.step_z, *least, *greatest};
    KN::FinishedFile file(path);
    bool const written = file.write(counts, sizeof(counts)) && file.write(measures, sizeof(measures)) &&
                         file.write(grid.values.data(), grid.values.size() * sizeof(float)) && file.commit();
    if (!written)
        error = file.error();
    return written;
}

using PLACE = std::array<float, 3>;

// The edges that only one triangle has, strung together. Vertices at one place count as one: seams of texture
// coordinates are no outlines.
std::vector<std::vector<PLACE>> outlines(std::vector<GLTF::GEOMETRY> const &meshes)
{
    std::map<PLACE, std::uint32_t> numbers;
    std::vector<PLACE> places;
    std::map<std::pair<std::uint32_t, std::uint32_t>, int> edges;  // from, to: as the triangles run
    for (GLTF::GEOMETRY const &mesh : meshes) {
        for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
            std::uint32_t number[3];
            for (std::size_t c = 0; c < 3; ++c) {
                float const *const p = corner(mesh, i + c);
                auto const [place, is_new] =
                    numbers.try_emplace({p[0] + 0.0f, p[1] + 0.0f, p[2] + 0.0f}, std::uint32_t(places.size()));
                if (is_new)
                    places.push_back(place->first);
                number[c] = place->second;
            }
            for (std::size_t c = 0; c < 3; ++c)
                ++edges[{number[c], number[(c + 1) % 3]}];
        }
    }
    std::multimap<std::uint32_t, std::uint32_t> next;
    for (auto const &[edge, count] : edges)
        if (edge.first != edge.second && !edges.contains({edge.second, edge.first}))
            next.insert(edge);

    std::vector<std::vector<PLACE>> lines;
    while (!next.empty()) {
        std::vector<PLACE> &line = lines.emplace_back();
        std::uint32_t at = next.begin()->first;
        line.push_back(places[at]);
        for (auto step = next.begin(); step != next.end(); step = next.find(at)) {
            at = step->second;
            line.push_back(places[at]);
            next.erase(step);
        }
    }
    return lines;
}

bool write_outlines(std::vector<GLTF::GEOMETRY> const &meshes, KN::String const &path, KN::String &error)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<terrain_outlines>\n";
    for (auto const &line : outlines(meshes)) {
        text += line.front() == line.back() ? "    <outline closed=\"1\">\n" : "    <outline closed=\"0\">\n";
        for (PLACE const &place : line)
            text += "        <point x=\"" + number_text(place[0]) + "\" y=\"" + number_text(place[1]) + "\" z=\"" +
                    number_text(place[2]) + "\"/>\n";
        text += "    </outline>\n";
    }
    text += "</terrain_outlines>\n";
    return KN::write_finished_file(path, text, error);
}

}  // namespace

bool write_terrain_tile(std::vector<GLTF::GEOMETRY> const &meshes, KN::String const &folder, KN::String &error)
{
    GRID heights;
    bool has_ground = lay_grid(meshes, heights);
    for (GLTF::GEOMETRY const &mesh : meshes)
        for (std::size_t i = 0; has_ground && i + 2 < mesh.indices.size(); i += 3) {
            if (!KN::goes_on()) {  // one triangle may cover the whole tile
                error = folder + ": interrupted";
                return false;
            }
            raise_triangle(corner(mesh, i), corner(mesh, i + 1), corner(mesh, i + 2), heights);
        }
    has_ground = has_ground && fill_holes(heights);
    if (!has_ground) {
        KN::message(KN::MESSAGE_WARNING,
                    folder + ": the model has no extent seen from above, and gets no files of a terrain tile");
        return true;
    }
    return write_grid(heights, folder + "/hf_height_map.data", error) &&
           write_grid(departures(meshes, heights), folder + "/hf_height_map_mesh_delta.data", error) &&
           write_outlines(meshes, folder + "/terrain_outlines.xml", error);
}

}  // namespace TOOLDATABUILDER
