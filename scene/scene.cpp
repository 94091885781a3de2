#include "scene/scene.h"

#include "scene/move_fields.h"

namespace VEX2_LOADER {

VEX2::VEX2() = default;
VEX2::~VEX2() = default;

void VEX2::clear()
{
    header = VEX2_HEADER();
    info = VEX2_SCENE_INFO();
    ambient = nullptr;
    tint = nullptr;
    lights.clear();
    cameras.clear();
    static_meshes.clear();
    animated_meshes.clear();
    morph_meshes.clear();
    weighted_meshes.clear();
    shapes.clear();
    helpers.clear();
    name_links.clear();
    hierarchy.nodes.clear();
    materials.clear();
    for (std::uint32_t id = 0; id < attachment_list_count; ++id)
        attachment_list(id)->clear();
    references_a.clear();
    references_b.clear();
    links.clear();
    int_track = VEX2_INT_TRACK();
}

VEX2_LIST<VEX2_ATTACHMENT> *VEX2::attachment_list(std::uint32_t id)
{
    VEX2_LIST<VEX2_ATTACHMENT> *const lists[attachment_list_count] = {
        &attachments_0, &attachments_1, &attachments_2, &attachments_3, &attachments_4,
        &attachments_5, &attachments_6, &attachments_7, &attachments_8, &attachments_9};
    return id < attachment_list_count ? lists[id] : nullptr;
}

template <class STEP>
void VEX2::move(STEP const &step)
{
    step(hierarchy);
    step(info);
    move_item(step, ambient);
    move_item(step, tint);
    move_item(step, lights);
    move_item(step, static_meshes);
    move_item(step, cameras);
    move_item(step, animated_meshes);
    move_item(step, morph_meshes);
    move_item(step, weighted_meshes);
    move_item(step, shapes);
    for (VEX2_WEIGHTED_MESH *mesh : weighted_meshes)
        if (mesh)
            mesh->skin(hierarchy);
    move_item(step, materials);
    move_item(step, name_links);
    move_item(step, attachments_9);
    move_item(step, attachments_3);
    move_item(step, attachments_5);
    move_item(step, attachments_0);
    move_item(step, attachments_4);
    move_item(step, attachments_6);
    move_item(step, attachments_1);
    move_item(step, attachments_7);
    move_item(step, attachments_8);
    move_item(step, references_a);
    move_item(step, references_b);
    step(int_track);
}

void VEX2::advance(float delta) { move(ADVANCE{delta}); }

void VEX2::seek(float time) { move(SEEK{time}); }

}  // namespace VEX2_LOADER
