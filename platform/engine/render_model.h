// RENDER_MODEL: a finished model as the renderer needs it: its finest level as parts with a surface each, and the
// textures. Constant once it is loaded.
#pragma once

#include "Plugins/Vx2/host/engine.h"
#include "platform/engine/texture.h"
#include "platform/gltf/model.h"

#include <map>
#include <memory>

namespace KESTREL {

struct SURFACE {
    GLTF::MATERIAL material;                         // its texture entries are not used
    std::shared_ptr<TEXTURE const> diffuse, normal;  // null: none

    bool is_solid() const { return material.alpha == GLTF::MATERIAL::SOLID; }
};

// A place on a triangle: the part that its second and its third vertex have.
struct PLACE {
    std::uint32_t triangle;
    float second, third;
};

struct RENDER_PART {
    GLTF::MODEL_PART geometry;
    SURFACE surface;
    std::vector<float> texels_per_metre;  // of the colour texture, one a triangle; empty: it has none

    // `to`: `width` numbers of the vertices' array `from`, blended.
    void blend(std::vector<float> const &from, unsigned width, PLACE const &place, float *to) const;
    // Whether something is to be seen there. What is half transparent is seen where its alpha is above `threshold`.
    bool is_seen(PLACE const &place, float threshold) const;
    // The colour in linear light, for a pixel that is `pixel` metres wide.
    void colour(PLACE const &place, float pixel, float to[3]) const;
    // In model space, of length 1: the vertices' normals with the normal texture, or the triangle's own where they are
    // of no use.
    void normal(PLACE const &place, float pixel, float to[3]) const;
    void triangle_normal(std::uint32_t triangle, float to[3]) const;
};

struct RENDER_MODEL {
    std::vector<RENDER_PART> parts;
    float box[6];  // least x, y, z, then greatest

    // `name`: a path on disk or below `root` (empty: nothing is below it). False, with a message, for a model that is
    // missing or damaged. A texture that cannot be read is a warning, and its surface goes without it.
    bool load(KN::String const &name, KN::String const &root, TEXTURE_NAME_MAPPER *mapper);
};

// The path on disk of `name`, which may be one below `root`.
KN::String path_of(KN::String const &name, KN::String const &root);
// The other way round: below `root` if the path lies there, else as it is; without "." and ".." sections.
KN::String name_of(KN::String const &path, KN::String const &root);
// The name of a file that the model at `model` names by the path `relative`.
KN::String name_from(KN::String const &model, GLTF::MODEL_HEAD const &head, std::string const &relative,
                     KN::String const &root);

}  // namespace KESTREL
