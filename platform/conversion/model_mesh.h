// One mesh of a scene becomes one mesh of the model: its vertices in the order in which the graphics card meets them,
// its attributes in model space, its triangles in cache order.
#pragma once

#include "platform/conversion/mesh_source.h"
#include "platform/gltf/document.h"

namespace TOOLDATABUILDER {

class MODEL_SKELETON;
struct MODEL_MATERIAL;

struct MODEL_MESH_OPTIONS {
    bool all_influences = false;  // of a skinned vertex; else the four strongest
    // The scene's material number of a section becomes that of the model.
    std::vector<int> const *material_numbers = nullptr;
    std::vector<MODEL_MATERIAL> const *materials = nullptr;  // of the model
};

// A mesh in the model, and what is needed to make coarser levels of it.
struct MODEL_MESH {
    int mesh = -1;  // in the document
    std::size_t triangles = 0;
    std::size_t finest_triangles = 0;  // of the level that this one was made of
    std::size_t vertices = 0;          // that the triangles use
    std::size_t vertex_count = 0;      // in the arrays, which coarser levels share
    std::size_t bytes = 0;             // of the vertices and indices that were added for it
    bool is_skinned = false;
    std::vector<std::vector<std::uint32_t>> indices;  // of each primitive
};

// Adds the mesh; one without triangles adds nothing (`mesh` stays -1). Normals that are zero are taken from the
// triangles, with a warning; frames that are of no use are built anew, or left out where no vertex has one. False, with
// a line in `error`, for a bad index, a number that is not finite, or a mesh that is out of all proportion.
bool add_model_mesh(MESH_SOURCE const &source, MODEL_SKELETON const &skeleton, MODEL_MESH_OPTIONS const &options,
                    GLTF::DOCUMENT &document, MODEL_MESH &made, KN::String &error);

// Adds the mesh again with `percent` of the triangles of its finest level, over the same vertices; `finer` is the level
// before. False if the document's buffer is full.
bool add_coarser_mesh(MODEL_MESH const &finer, unsigned percent, GLTF::DOCUMENT &document, MODEL_MESH &made);

}  // namespace TOOLDATABUILDER
