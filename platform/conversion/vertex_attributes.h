// The attributes of a mesh's vertices, put into the arrays of a model.
#pragma once

#include "platform/conversion/mesh_source.h"
#include "platform/gltf/document.h"

namespace TOOLDATABUILDER {

class MODEL_SKELETON;

inline constexpr std::uint32_t most_uv_sets = 8;  // of a mesh; further ones are left out

// What the vertices of one mesh give; there is at least one. Vertex v of the source becomes vertex `number_of[v]` of
// the model, or none if that is `unused_vertex`. Loops run over the source, whose vertices are large, and write where
// the numbers lead.
struct ATTRIBUTE_JOB {
    MESH_SOURCE const &source;
    std::vector<std::uint32_t> const &number_of;
    std::size_t count;                                       // of the model's vertices
    std::vector<std::vector<std::uint32_t>> const &indices;  // triangles over the model's vertices
    GLTF::DOCUMENT &document;
};
inline constexpr std::uint32_t unused_vertex = 0xffffffff;

// Each appends to `attributes`; what the mesh does not have is left out. False, with a line in `error`, for numbers
// that are not finite. A buffer that is full leaves the attribute out, and the document is refused when it is written.
bool add_positions_and_normals(ATTRIBUTE_JOB const &job, GLTF::PRIMITIVE::ATTRIBUTES &attributes, KN::String &error);
// At least `least_sets` sets, zeros where the mesh has none: materials name sets that have to be there.
bool add_uvs(ATTRIBUTE_JOB const &job, std::uint32_t least_sets, GLTF::PRIMITIVE::ATTRIBUTES &attributes,
             KN::String &error);
bool add_colours(ATTRIBUTE_JOB const &job, GLTF::PRIMITIVE::ATTRIBUTES &attributes, KN::String &error);
void add_tangents(ATTRIBUTE_JOB const &job, GLTF::PRIMITIVE::ATTRIBUTES &attributes);
bool add_influences(ATTRIBUTE_JOB const &job, MODEL_SKELETON const &skeleton, bool all_influences,
                    GLTF::PRIMITIVE::ATTRIBUTES &attributes, KN::String &error);
bool add_morph_targets(ATTRIBUTE_JOB const &job, std::vector<GLTF::PRIMITIVE::ATTRIBUTES> &targets, GLTF::MESH &mesh,
                       KN::String &error);

}  // namespace TOOLDATABUILDER
