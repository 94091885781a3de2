#include "examples/skin_kit.h"

#include "scene/scene.h"

namespace EXAMPLES {

using namespace VEX2_LOADER;

static constexpr TEXTURE_FIT cloth_fit = {0.25f};

SHAPE lofted(std::initializer_list<RING> rings, unsigned sides, EDGES edges)
{
    SHAPE made;
    made.loft(std::span(rings.begin(), rings.size()), sides, edges, cloth_fit);
    return made;
}

SHAPE ball(VEX2_VECTOR const &middle, VEX2_VECTOR const &radii, unsigned sides)
{
    std::vector<RING> rings;
    unsigned const rows = sides / 2;
    for (unsigned i = 0; i <= rows; ++i) {
        float const angle = pi * (float(i) / float(rows) - 0.5f);
        float const wide = i == 0 || i == rows ? 0 : std::cos(angle);
        rings.push_back({{middle.x, middle.y + radii.y * std::sin(angle), middle.z}, radii.x * wide, radii.z * wide});
    }
    SHAPE made;
    made.loft(rings, sides, EDGES::SMOOTH, cloth_fit);
    return made;
}

unsigned add_joints(VEX2 &scene, std::span<JOINT const> joints, std::u16string_view prefix, int top,
                    VEX2_VECTOR const &place)
{
    unsigned const first = unsigned(scene.hierarchy.nodes.count);
    for (JOINT const &joint : joints) {
        KN::UniString const name = KN::UniString(prefix) + KN::UniString(joint.name);
        if (joint.parent < 0)
            scene.hierarchy.add_node(name, top, joint.place + place);
        else
            scene.hierarchy.add_node(name, int(first) + joint.parent,
                                     joint.place - joints[std::size_t(joint.parent)].place);
    }
    return first;
}

static void add_influence(VEX2_WEIGHTED_VERTEX &vertex, unsigned bone, float weight)
{
    if (weight == 0)
        return;
    VEX2_INFLUENCE &influence = vertex.influences.append();
    influence.matrix_index = bone;
    influence.weight = weight;
}

void add_skinned_mesh(VEX2 &scene, std::u16string_view name, std::vector<PART> const &parts)
{
    auto *const mesh = new VEX2_WEIGHTED_MESH;
    mesh->name = name;
    mesh->attributes.add_string(u"class_TYPE", u"DISPLAY");
    std::vector<SURFACE> surfaces;
    for (PART const &part : parts) {
        surfaces.push_back({part.material, part.shape});
        for (CORNER const &corner : part.shape.corners) {
            VEX2_WEIGHTED_VERTEX &vertex = mesh->vertices.append();
            set_vertex(vertex, corner);
            vertex.bind_position = corner.position;
            vertex.bind_normal = corner.normal;
            BEND const &bend = part.bend;
            float const upper = bend.upper == bend.lower ? 1
                                                         : smooth_step(bend.height - bend.reach,
                                                                       bend.height + bend.reach, corner.position.y);
            add_influence(vertex, bend.upper, upper);
            add_influence(vertex, bend.lower, 1 - upper);
        }
    }
    add_sections(*mesh, surfaces);
    scene.weighted_meshes.append(mesh);
}

void key_rotation(VEX2 &scene, unsigned node, VEX2_VECTOR const &axis, SECONDS_AND_DEGREES keys)
{
    auto *const channel = new VEX2_SLERP_ROTATION_CHANNEL;
    for (auto const &[seconds, degrees] : keys)
        append_key(*channel, seconds, rotation_about(axis, degrees));
    scene.hierarchy.nodes[node].rotation = channel;
}

void key_translation(VEX2 &scene, unsigned node, std::initializer_list<std::pair<float, VEX2_VECTOR>> keys)
{
    auto *const channel = new VEX2_VECTOR_CHANNEL;
    for (auto const &[seconds, place] : keys)
        append_key(*channel, seconds, place);
    scene.hierarchy.nodes[node].translation = channel;
}

}  // namespace EXAMPLES
