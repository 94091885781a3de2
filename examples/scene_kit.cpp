#include "examples/scene_kit.h"

#include "scene/material_names.h"
#include "scene/scene.h"
#include "scene/writer.h"

#include <iostream>

namespace EXAMPLES {

using namespace VEX2_LOADER;

template <class ATTRIBUTE, class CHANNEL, class VALUE>
static void add_parameter(KN::DynamicArray<ATTRIBUTE> &list, std::u16string_view name, VALUE const &value)
{
    ATTRIBUTE &added = list.append();
    added.name = name;
    added.value = constant_channel<CHANNEL>(value);
}

int add_material(VEX2 &scene, LOOK const &look)
{
    auto *const material = new VEX2_SHADER_MATERIAL;
    material->name = look.name;
    material->shader = MATERIAL_NAME::shader;
    if (!look.picture.empty())
        material->textures.append(VEX2_SHADER_TEXTURE{MATERIAL_NAME::diffuse_slot, KN::UniString(look.picture)});
    if (!look.normal_picture.empty())
        material->textures.append(VEX2_SHADER_TEXTURE{MATERIAL_NAME::normal_slot, KN::UniString(look.normal_picture)});
    add_parameter<VEX2_VECTOR4_ATTRIBUTE, VEX2_VECTOR4_CHANNEL>(material->vector4s, MATERIAL_NAME::diffuse_colour,
                                                                VEX2_VECTOR4{look.red, look.green, look.blue, 1});
    add_parameter<VEX2_FLOAT_ATTRIBUTE, VEX2_FLOAT_CHANNEL>(material->floats, MATERIAL_NAME::roughness, look.roughness);
    add_parameter<VEX2_FLOAT_ATTRIBUTE, VEX2_FLOAT_CHANNEL>(material->floats, MATERIAL_NAME::metalness, look.metalness);
    if (look.two_sided)
        add_parameter<VEX2_INT_ATTRIBUTE, VEX2_INT_CHANNEL>(material->ints, MATERIAL_NAME::two_sided, 1u);
    if (look.cut_out)
        add_parameter<VEX2_INT_ATTRIBUTE, VEX2_INT_CHANNEL>(material->ints, MATERIAL_NAME::alpha_mode, 1u);
    scene.materials.append(material);
    return int(scene.materials.count) - 1;
}

void set_vertex(VEX2_VERTEX &vertex, CORNER const &corner)
{
    vertex.position = corner.position;
    vertex.normal = corner.normal;
    vertex.colour = {1, 1, 1, 1};
    vertex.uvws.append(VEX2_VECTOR{corner.u, corner.v, 0});
}

void add_sections(VEX2_MESH &mesh, std::vector<SURFACE> const &surfaces)
{
    std::uint32_t first = 0;
    for (SURFACE const &surface : surfaces) {
        if (surface.shape.indices.empty())
            continue;
        VEX2_POLYGON_SET &section = mesh.sections.append();
        section.material_index = surface.material;
        for (std::size_t i = 0; i < surface.shape.indices.size(); i += 3) {
            std::uint32_t const *const index = &surface.shape.indices[i];
            section.triangles.append(VEX2_TRIANGLE{{first + index[0], first + index[1], first + index[2]}});
        }
        first += std::uint32_t(surface.shape.corners.size());
    }
}

void add_static_mesh(VEX2 &scene, std::u16string_view name, std::u16string_view class_type, unsigned node,
                     std::vector<SURFACE> const &surfaces)
{
    auto *const mesh = new VEX2_STATIC_MESH;
    mesh->name = name;
    mesh->matrix_index = node;
    mesh->attributes.add_string(u"class_TYPE", class_type);
    for (SURFACE const &surface : surfaces)
        for (CORNER const &corner : surface.shape.corners)
            set_vertex(mesh->vertices.append(), corner);
    add_sections(*mesh, surfaces);
    scene.static_meshes.append(mesh);
}

bool save_scene(VEX2 const &scene, KN::String const &path)
{
    VEX2_CHUNK_WRITER writer(KN::from_utf8(path), false, true);
    writer.write_references = false;  // each scene of the tree is written by its own maker
    bool const written = scene.write(writer);
    if (writer.close() && written)
        return true;
    std::cerr << path << ": cannot be written\n";
    return false;
}

}  // namespace EXAMPLES
