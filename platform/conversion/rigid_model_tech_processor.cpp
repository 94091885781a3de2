#include "Plugins/Vx2/host/rigid_model_tech_processor.h"

#include "Plugins/Vx2/host/vex2_filter.h"
#include "foundation/file.h"
#include "foundation/messages.h"
#include "platform/conversion/mesh_source.h"

#include <algorithm>

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER::MESH {

// The stem of the referenced file: what stands between its last separator and its last dot.
static KN::String reference_id(VEX2_SCENE_REFERENCE const &reference)
{
    KN::String path = KN::to_utf8(reference.path);
    std::ranges::replace(path, '\\', '/');
    path = path.substr(path.rfind('/') + 1);
    return KN::String(path.substr(0, path.rfind('.'))).lower() + "/tech";
}

bool RIGID_MODEL_TECH_PROCESSOR::convert_vex(VEX2 &scene, KN::UniString const &source, KN::UniString const &parsed,
                                             bool all_kinds, VEX2_FILTER const &filter,
                                             KN_STD::SET<KN::String> &references)
{
    for (auto const *const list : {&scene.references_a, &scene.references_b})
        for (VEX2_SCENE_REFERENCE const *const reference : *list)
            if (reference != nullptr)
                references.insert(reference_id(*reference));

    std::vector<GLTF::GEOMETRY> meshes;
    KN::String error;
    for (VEX2_MESH const *const mesh : filtered_meshes(scene, filter)) {
        if (!all_kinds && dynamic_cast<VEX2_STATIC_MESH const *>(mesh) == nullptr)
            continue;
        if (!MESH_SOURCE(scene, *mesh).take_geometry(meshes.emplace_back(), error)) {
            KN::message(KN::MESSAGE_ERROR, KN::disk_path(source) + ": " + error);
            return false;
        }
    }
    if (!GLTF::write_geometry(meshes, {}, {}, KN::disk_path(parsed), error)) {
        KN::message(KN::MESSAGE_ERROR, error);
        return false;
    }
    return true;
}

}  // namespace TOOLDATABUILDER::MESH
