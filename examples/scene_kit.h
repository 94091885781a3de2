// From shapes to scene files: materials, static meshes, saving.
#pragma once

#include "examples/shape.h"
#include "foundation/string.h"

#include <string_view>
#include <vector>

namespace VEX2_LOADER {
class VEX2;
class VEX2_MESH;
class VEX2_VERTEX;
}  // namespace VEX2_LOADER

namespace EXAMPLES {

using VEX2_LOADER::VEX2;

// A surface as the metallic-roughness model has it. The pictures stand beside the scene; an empty name means none.
struct LOOK {
    std::u16string_view name;
    std::u16string_view picture = u"";
    std::u16string_view normal_picture = u"";
    float red = 1, green = 1, blue = 1;  // linear light, multiplied with the picture
    float roughness = 0.9f;
    float metalness = 0;
    bool two_sided = false;
    bool cut_out = false;  // where the picture's opacity is below a half, there is nothing
};

// Its index among the scene's materials.
int add_material(VEX2 &scene, LOOK const &look);

// What has one material in a mesh.
struct SURFACE {
    int material;
    SHAPE shape;
};

// Appends a static mesh that the node `node` places. Surfaces without triangles are left out.
void add_static_mesh(VEX2 &scene, std::u16string_view name, std::u16string_view class_type, unsigned node,
                     std::vector<SURFACE> const &surfaces);

// The triangles of `surfaces` as sections of `mesh`, whose vertices are the corners of one surface after the other.
void add_sections(VEX2_LOADER::VEX2_MESH &mesh, std::vector<SURFACE> const &surfaces);
void set_vertex(VEX2_LOADER::VEX2_VERTEX &vertex, CORNER const &corner);

// False, with a line on standard error, if the file cannot be written.
bool save_scene(VEX2 const &scene, KN::String const &path);

}  // namespace EXAMPLES
