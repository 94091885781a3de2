#include "Plugins/Vx2/host/uvw_test.h"

#include "scene/scene.h"

#include <cmath>

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

namespace {

bool is_finite(VEX2_VERTEX_INTERFACE const &vertex)
{
    for (std::uint32_t i = 0; i < vertex.uvw_count(); ++i) {
        VEX2_VECTOR uvw;
        vertex.get_uvw(i, uvw);
        if (!std::isfinite(uvw.x) || !std::isfinite(uvw.y) || !std::isfinite(uvw.z))
            return false;
    }
    return true;
}

// What is wrong with the vertex beside the first of its mesh; null if nothing is.
char const *fault_of(VEX2_VERTEX_INTERFACE const &vertex, VEX2_VERTEX_INTERFACE const &first)
{
    if (vertex.uvw_count() != first.uvw_count())
        return "has another number of UVW sets than vertex 0; give the whole mesh the same map channels";
    if (vertex.frame_count() != first.frame_count())
        return "has another number of tangent frames than vertex 0; export the scene again";
    if (!is_finite(vertex))
        return "has a texture coordinate that is no finite number; unwrap it again";
    return nullptr;
}

template <class LIST>
void test_meshes(LIST const &meshes, KN::UniString &message)
{
    for (auto const *const mesh : meshes) {
        if (mesh == nullptr)
            continue;
        for (std::uint32_t i = 0; i < mesh->vertices.count; ++i) {
            char const *const fault = fault_of(mesh->vertices[i], mesh->vertices[0]);
            if (fault == nullptr)
                continue;
            message = u"Mesh '" + mesh->name + u"': vertex " + KN::UniString::format(i) + u" " +
                      KN::must_fix_string_widen(fault) + u".";
            return;
        }
    }
}

}  // namespace

void test_vex2_uvws(VEX2 const &scene, KN::UniString &message)
{
    test_meshes(scene.static_meshes, message);
    if (message.empty())
        test_meshes(scene.weighted_meshes, message);
    if (message.empty())
        test_meshes(scene.morph_meshes, message);
    if (message.empty())
        test_meshes(scene.animated_meshes, message);
}

}  // namespace TOOLDATABUILDER
