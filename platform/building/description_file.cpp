#include "platform/building/description_file.h"

#include "platform/building/incendiary_points.h"

#include <algorithm>

namespace CORVANEUTILITY {

using GLTF::MEMBERS;
using GLTF::VALUE;

namespace {

struct BOX {
    float least[3] = {}, greatest[3] = {};
    bool is_empty = true;

    void add(float const *point)
    {
        for (int i = 0; i < 3; ++i) {
            least[i] = is_empty ? point[i] : std::min(least[i], point[i]);
            greatest[i] = is_empty ? point[i] : std::max(greatest[i], point[i]);
        }
        is_empty = false;
    }
};

// Of what the triangles use.
void add_mesh(GLTF::GEOMETRY const &mesh, BOX &box)
{
    for (std::uint32_t const index : mesh.indices)
        box.add(&mesh.positions[std::size_t(index) * 3]);
}

VALUE numbers(float const *values)
{
    return std::vector<VALUE>{double(values[0]), double(values[1]), double(values[2])};
}

VALUE as_value(BOX const &box) { return MEMBERS{{"least", numbers(box.least)}, {"greatest", numbers(box.greatest)}}; }

}  // namespace

bool write_description(DESCRIPTION const &description, KN::String const &target, std::size_t &points, KN::String &error)
{
    std::vector<MEMBERS> boxes;
    BOX whole;
    for (GLTF::GEOMETRY const &mesh : description.meshes) {
        BOX box;
        add_mesh(mesh, box);
        add_mesh(mesh, whole);
        boxes.push_back({{"box", as_value(box)}});
    }
    std::vector<VALUE> places;
    for (auto const &point : incendiary_points(description.meshes, description.incendiary_radius))
        places.push_back(numbers(point.data()));
    points = places.size();

    MEMBERS extras = {{"can_burn", description.can_burn}};
    if (!whole.is_empty)
        extras.emplace_back("box", as_value(whole));
    if (!places.empty())
        extras.emplace_back("incendiary_points", std::move(places));
    return GLTF::write_geometry(description.meshes, boxes, extras, target, error);
}

}  // namespace CORVANEUTILITY
