#include "platform/conversion/level_statistics.h"

#include <algorithm>
#include <set>

namespace TOOLDATABUILDER {

MODEL_LEVEL_STATISTICS count_level(GLTF::DOCUMENT &document, std::vector<MODEL_MESH> const &level, std::uint32_t joints)
{
    MODEL_LEVEL_STATISTICS made;
    std::set<int> used_materials;
    bool is_first = true;
    for (MODEL_MESH const &mesh : level) {
        ++made.meshes;
        made.triangles += mesh.triangles;
        made.vertices += mesh.vertices;
        made.bytes += mesh.bytes;
        if (mesh.is_skinned)
            made.bones = joints;
        GLTF::MESH const &in_model = document.meshes[std::size_t(mesh.mesh)];
        for (std::size_t i = 0; i < mesh.indices.size(); ++i) {
            used_materials.insert(in_model.primitives[i].material);
            float const *const positions = document.buffer.at<float>(in_model.primitives[i].attributes[0].second);
            for (std::uint32_t const index : mesh.indices[i]) {
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    float const value = positions[std::size_t(index) * 3 + axis];
                    made.least[axis] = is_first ? value : std::min(made.least[axis], value);
                    made.greatest[axis] = is_first ? value : std::max(made.greatest[axis], value);
                }
                is_first = false;
            }
        }
    }
    used_materials.erase(-1);
    made.materials = std::uint32_t(used_materials.size());
    return made;
}

GLTF::VALUE as_value(std::vector<MODEL_LEVEL_STATISTICS> const &levels)
{
    std::vector<GLTF::VALUE> list;
    for (MODEL_LEVEL_STATISTICS const &level : levels)
        list.push_back(GLTF::MEMBERS{{"distance", double(level.distance)},
                                     {"meshes", int(level.meshes)},
                                     {"triangles", double(level.triangles)},
                                     {"vertices", double(level.vertices)},
                                     {"materials", int(level.materials)},
                                     {"bones", int(level.bones)}});
    return list;
}

}  // namespace TOOLDATABUILDER
