// The scene of the load benchmarks: the grid as one static mesh, each vertex with one UVW set and one frame.
#pragma once

#include "benchmarks/scene/grid_shape.h"
#include "scene/buffer.h"
#include "scene/scene.h"
#include "scene/writer.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace GRID_SCENE {

using namespace VEX2_LOADER;

using GRID_SHAPE::side;
using GRID_SHAPE::triangle_count;

inline VEX2_VERTEX vertex_at(unsigned column, unsigned row)
{
    VEX2_VERTEX vertex;
    auto const [x, y, z] = GRID_SHAPE::position(column, row);
    float const u = GRID_SHAPE::along(column), v = GRID_SHAPE::along(row);
    vertex.position = {x, y, z};
    vertex.normal = {0, 1, 0};
    vertex.colour = {u, v, 1, 1};
    vertex.uvws.append(VEX2_VECTOR{u, v, 0});
    vertex.frames.append(VEX2_TANGENT_FRAME{{0, 0, 1}, {1, 0, 0}});
    return vertex;
}

inline VEX2_POLYGON_SET grid_triangles()
{
    VEX2_POLYGON_SET section;
    section.triangles.reserve(triangle_count);
    GRID_SHAPE::for_each_triangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        section.triangles.append(VEX2_TRIANGLE{{a, b, c}});
    });
    return section;
}

inline std::unique_ptr<VEX2> make_scene()
{
    auto scene = std::make_unique<VEX2>();
    scene->hierarchy.add_node(u"root", -1, {0, 0, 0});
    VEX2_STATIC_MESH *const mesh = scene->static_meshes.append(new VEX2_STATIC_MESH);
    mesh->vertices.reserve(side * side);
    for (unsigned row = 0; row < side; ++row)
        for (unsigned column = 0; column < side; ++column)
            mesh->vertices.append(vertex_at(column, row));
    mesh->sections.append(grid_triangles());
    return scene;
}

inline std::filesystem::path scratch_file()
{
    return std::filesystem::temp_directory_path() / "mox_scene_benchmark.vx2";
}

inline bool write_scene(VEX2 const &scene)
{
    VEX2_CHUNK_WRITER writer(KN::from_utf8(scratch_file().string()), false, true);
    bool const good = scene.write(writer);
    return writer.close() && good;
}

inline std::string file_of(VEX2 const &scene)
{
    write_scene(scene);
    std::ifstream in(scratch_file(), std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    std::filesystem::remove(scratch_file());
    return bytes;
}

}  // namespace GRID_SCENE
