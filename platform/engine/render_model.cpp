#include "platform/engine/render_model.h"

#include "Plugins/Vx2/host/vfs.h"
#include "foundation/file.h"
#include "foundation/messages.h"
#include "platform/texture/picture.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace KESTREL {

namespace {

void cross(float const a[3], float const b[3], float to[3])
{
    to[0] = a[1] * b[2] - a[2] * b[1];
    to[1] = a[2] * b[0] - a[0] * b[2];
    to[2] = a[0] * b[1] - a[1] * b[0];
}

float length(float const v[3]) { return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]); }

// False if there is no length to speak of; the vector then stays.
bool normalise(float v[3])
{
    float const l = length(v);
    if (!(l > 1e-20f) || !std::isfinite(l))
        return false;
    for (unsigned i = 0; i < 3; ++i)
        v[i] /= l;
    return true;
}

// The normal of a triangle, twice its area long.
void area_normal(GLTF::MODEL_PART const &part, std::uint32_t triangle, float to[3])
{
    float const *corners[3];
    for (unsigned i = 0; i < 3; ++i)
        corners[i] = &part.positions[std::size_t(part.indices[std::size_t(triangle) * 3 + i]) * 3];
    float a[3], b[3];
    for (unsigned i = 0; i < 3; ++i) {
        a[i] = corners[1][i] - corners[0][i];
        b[i] = corners[2][i] - corners[0][i];
    }
    cross(a, b, to);
}

std::vector<float> texel_densities(GLTF::MODEL_PART const &part, TEXTURE const &texture)
{
    std::vector<float> densities(part.indices.size() / 3);
    float const texels = float(texture.width()) * float(texture.height());
    for (std::size_t t = 0; t < densities.size(); ++t) {
        float const *uv[3];
        for (unsigned i = 0; i < 3; ++i)
            uv[i] = &part.uvs[std::size_t(part.indices[t * 3 + i]) * 2];
        float normal[3];
        area_normal(part, std::uint32_t(t), normal);
        float const area = length(normal);
        float const uv_area =
            std::abs((uv[1][0] - uv[0][0]) * (uv[2][1] - uv[0][1]) - (uv[2][0] - uv[0][0]) * (uv[1][1] - uv[0][1]));
        densities[t] = area > 0 ? std::sqrt(uv_area * texels / area) : 0;
    }
    return densities;
}

// The textures of a model; each file is read once for each use that it is put to.
class TEXTURES {
public:
    TEXTURES(KN::String const &model_path, GLTF::MODEL_HEAD const &model_head, KN::String const &data_root,
             TEXTURE_NAME_MAPPER *name_mapper)
        : model(model_path), head(model_head), root(data_root), mapper(name_mapper)
    {}

    std::shared_ptr<TEXTURE const> get(GLTF::TEXTURE const &use, int kind, bool opaque)
    {
        if (use.uri.empty())
            return nullptr;
        KN::String name = name_from(model, head, use.uri, root);
        if (mapper)
            name = mapper->map(kind, name);
        auto const [place, is_new] = loaded.try_emplace({name, kind, opaque});
        if (is_new)
            place->second = load(name, kind, opaque);
        return place->second;
    }

private:
    struct KEY {
        std::string name;
        int kind;
        bool opaque;
        auto operator<=>(KEY const &) const = default;
    };

    std::shared_ptr<TEXTURE const> load(KN::String const &name, int kind, bool opaque)
    {
        PICTURE picture;
        KN::String error;
        KN::String const file = UTILITYDLL::vfs().find(name);
        if (!read_picture(file.empty() ? path_of(name, root) : file, picture, error)) {
            KN::message(KN::MESSAGE_WARNING, error + "; the model goes without this texture");
            return nullptr;
        }
        CONTENT const content = kind == TEXTURE_NAME_MAPPER::NORMAL ? CONTENT::NORMAL : CONTENT::COLOUR;
        return std::make_shared<TEXTURE const>(std::move(picture), content, opaque);
    }

    KN::String const &model;
    GLTF::MODEL_HEAD const &head;
    KN::String const &root;
    TEXTURE_NAME_MAPPER *mapper;
    std::map<KEY, std::shared_ptr<TEXTURE const>> loaded;
};

}  // namespace

KN::String path_of(KN::String const &name, KN::String const &root)
{
    bool const is_absolute = std::filesystem::path(std::string(KN::disk_path(name))).is_absolute();
    return is_absolute || root.empty() ? name : KN::String(root + "/" + name);
}

KN::String name_of(KN::String const &path, KN::String const &root)
{
    KN::String name(std::filesystem::path(std::string(KN::disk_path(path))).lexically_normal().generic_string());
    if (!root.empty() && name.starts_with(root + "/"))
        name.erase(0, root.size() + 1);
    return name;
}

KN::String name_from(KN::String const &model, GLTF::MODEL_HEAD const &head, std::string const &relative,
                     KN::String const &root)
{
    if (!head.place.empty())
        return name_of(head.place + "/" + relative, root);
    return name_of(model.substr(0, model.find_last_of("/\\") + 1) + relative, root);
}

void RENDER_PART::blend(std::vector<float> const &from, unsigned width, PLACE const &place, float *to) const
{
    float const parts[3] = {1 - place.second - place.third, place.second, place.third};
    std::fill_n(to, width, 0.0f);
    for (unsigned corner = 0; corner < 3; ++corner) {
        float const *const values =
            &from[std::size_t(geometry.indices[std::size_t(place.triangle) * 3 + corner]) * width];
        for (unsigned i = 0; i < width; ++i)
            to[i] += parts[corner] * values[i];
    }
}

bool RENDER_PART::is_seen(PLACE const &place, float threshold) const
{
    float alpha = surface.material.colour[3];
    if (surface.diffuse) {
        float uv[2];
        blend(geometry.uvs, 2, place, uv);
        alpha *= surface.diffuse->alpha(uv[0], uv[1]);
    }
    if (!geometry.colours.empty()) {
        float colour[4];
        blend(geometry.colours, 4, place, colour);
        alpha *= colour[3];
    }
    return surface.material.alpha == GLTF::MATERIAL::CUT_OFF ? alpha >= surface.material.cut_off : alpha > threshold;
}

void RENDER_PART::colour(PLACE const &place, float pixel, float to[3]) const
{
    std::copy_n(surface.material.colour, 3, to);
    if (surface.diffuse) {
        float uv[2];
        blend(geometry.uvs, 2, place, uv);
        unsigned const level = surface.diffuse->level_for(pixel * texels_per_metre[place.triangle]);
        TEXEL const texel = surface.diffuse->sample(uv[0], uv[1], level);
        for (unsigned c = 0; c < 3; ++c)
            to[c] *= texel.colour[c];
    }
    if (!geometry.colours.empty()) {
        float colour[4];
        blend(geometry.colours, 4, place, colour);
        for (unsigned c = 0; c < 3; ++c)
            to[c] *= colour[c];
    }
}

void RENDER_PART::triangle_normal(std::uint32_t triangle, float to[3]) const
{
    area_normal(geometry, triangle, to);
    if (!normalise(to))
        to[0] = to[1] = 0, to[2] = 1;
}

void RENDER_PART::normal(PLACE const &place, float pixel, float to[3]) const
{
    if (!geometry.normals.empty())
        blend(geometry.normals, 3, place, to);
    if (geometry.normals.empty() || !normalise(to)) {
        triangle_normal(place.triangle, to);
        return;
    }
    if (!surface.normal || geometry.tangents.empty())
        return;
    float tangent[4], uv[2], binormal[3], turned[3];
    blend(geometry.tangents, 4, place, tangent);
    blend(geometry.uvs, 2, place, uv);
    cross(to, tangent, binormal);
    float const density = texels_per_metre.empty() ? 0 : texels_per_metre[place.triangle];
    TEXEL const texel = surface.normal->sample(uv[0], uv[1], surface.normal->level_for(pixel * density));
    float const handedness = tangent[3] < 0 ? -1.0f : 1.0f;
    for (unsigned i = 0; i < 3; ++i)
        turned[i] = tangent[i] * (2 * texel.colour[0] - 1) + binormal[i] * handedness * (2 * texel.colour[1] - 1) +
                    to[i] * (2 * texel.colour[2] - 1);
    if (normalise(turned))
        std::copy_n(turned, 3, to);
}

bool RENDER_MODEL::load(KN::String const &name, KN::String const &root, TEXTURE_NAME_MAPPER *mapper)
{
    KN::String const path = path_of(name, root);
    GLTF::MODEL_HEAD head;
    std::vector<GLTF::MODEL_PART> geometry;
    KN::String error;
    if (!GLTF::read_model(path, head, &geometry, error)) {
        KN::message(KN::MESSAGE_ERROR, error);
        return false;
    }
    TEXTURES textures(path, head, root, mapper);
    std::vector<SURFACE> surfaces;
    for (GLTF::MATERIAL &material : head.materials) {
        SURFACE surface;
        surface.diffuse =
            textures.get(material.diffuse, TEXTURE_NAME_MAPPER::DIFFUSE, material.alpha == GLTF::MATERIAL::SOLID);
        if (material.normal.uv_set == material.diffuse.uv_set)  // whose coordinates are the ones that were read
            surface.normal = textures.get(material.normal, TEXTURE_NAME_MAPPER::NORMAL, true);
        surface.material = std::move(material);
        surfaces.push_back(std::move(surface));
    }
    std::fill_n(box, 6, 0.0f);
    bool is_first = true;
    for (GLTF::MODEL_PART &part : geometry) {
        for (std::uint32_t const index : part.indices) {
            for (unsigned axis = 0; axis < 3; ++axis) {
                float const value = part.positions[std::size_t(index) * 3 + axis];
                box[axis] = is_first ? value : std::min(box[axis], value);
                box[axis + 3] = is_first ? value : std::max(box[axis + 3], value);
            }
            is_first = false;
        }
        RENDER_PART made;
        made.surface = part.material < 0 ? SURFACE() : surfaces[std::size_t(part.material)];
        if (part.uvs.empty())
            made.surface.diffuse = made.surface.normal = nullptr;
        if (made.surface.diffuse)
            made.texels_per_metre = texel_densities(part, *made.surface.diffuse);
        made.geometry = std::move(part);
        parts.push_back(std::move(made));
    }
    return true;
}

}  // namespace KESTREL
