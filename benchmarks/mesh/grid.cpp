#include "benchmarks/mesh/grid.h"

#include <random>

std::vector<GRID_CORNER> make_grid(GRID_KIND kind)
{
    std::mt19937 random(1);
    auto const unit = [&random] { return float(random() >> 8) / float(1 << 24); };
    std::vector<GRID_CORNER> field;
    for (unsigned z = 0; z <= grid_side; ++z)
        for (unsigned x = 0; x <= grid_side; ++x) {
            float const fx = float(x) * 0.5f, fz = float(z) * 0.5f;
            if (kind == GRID_KIND::FLAT)
                field.push_back({{fx, 0, fz}, {0, 1, 0}, {1, 1, 1, 1}, {fx, fz, 0}});
            else
                field.push_back({{fx, unit(), fz},
                                 {unit(), unit(), unit()},
                                 {unit(), unit(), unit(), 1},
                                 {float(x) / grid_side, float(z) / grid_side, 0}});
        }

    std::vector<unsigned> triangles(2 * grid_side * grid_side);
    for (unsigned i = 0; i < triangles.size(); ++i)
        triangles[i] = i;
    if (kind == GRID_KIND::SHUFFLED)
        for (std::size_t i = triangles.size() - 1; i > 0; --i)
            std::swap(triangles[i], triangles[random() % (i + 1)]);

    std::vector<GRID_CORNER> corners;
    corners.reserve(3 * triangles.size());
    for (unsigned const triangle : triangles) {
        unsigned const square = triangle / 2;
        unsigned const a = square / grid_side * (grid_side + 1) + square % grid_side;
        unsigned const below = a + grid_side + 1;
        unsigned const places[2][3] = {{a, below, a + 1}, {a + 1, below, below + 1}};
        for (unsigned const place : places[triangle % 2])
            corners.push_back(field[place]);
    }
    return corners;
}

std::unique_ptr<VEX2_LOADER::VEX2> scene_of(std::vector<GRID_CORNER> const &corners)
{
    using namespace VEX2_LOADER;
    unsigned const count = unsigned(corners.size());
    auto scene = std::make_unique<VEX2>();
    VEX2_STATIC_MESH &mesh = *new VEX2_STATIC_MESH;
    scene->static_meshes.append(&mesh);
    mesh.colour_flag = 1;
    VEX2_VECTOR *const uvws = mesh.blocks.allocate<VEX2_VECTOR>(count);
    mesh.vertices.resize(count);
    for (unsigned i = 0; i < count; ++i) {
        GRID_CORNER const &corner = corners[i];
        VEX2_VERTEX &vertex = mesh.vertices[i];
        vertex.position = {corner.position[0], corner.position[1], corner.position[2]};
        vertex.normal = {corner.normal[0], corner.normal[1], corner.normal[2]};
        vertex.colour = {corner.colour[0], corner.colour[1], corner.colour[2], corner.colour[3]};
        uvws[i] = {corner.uvw[0], corner.uvw[1], corner.uvw[2]};
        vertex.uvws.borrow(uvws + i, 1);
    }
    mesh.sections.resize(1);
    mesh.sections[0].triangles.reserve(count / 3);
    for (unsigned i = 0; i < count; i += 3)
        mesh.sections[0].triangles.append(VEX2_TRIANGLE{{i, i + 1, i + 2}});
    return scene;
}
