#include "platform/conversion/model_materials.h"

#include "platform/conversion/texture_files.h"
#include "platform/conversion/vertex_attributes.h"
#include "platform/gltf/uri.h"
#include "scene/material_names.h"

#include <algorithm>
#include <cmath>

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

namespace {

template <class ATTRIBUTES, class VALUE>
void take_value(ATTRIBUTES const &attributes, std::u16string_view name, VALUE &out)
{
    for (auto const &attribute : attributes)
        if (attribute.name == name && attribute.value)
            attribute.value->value(out);
}

float share(float value, float otherwise) { return std::isfinite(value) ? std::clamp(value, 0.0f, 1.0f) : otherwise; }

int uv_set_of(VEX2_SHADER_MATERIAL const &from, std::u16string_view slot)
{
    for (VEX2_SHADER_SLOT const &entry : from.slots)
        if (entry.name == slot && entry.numbers[0] < most_uv_sets)
            return int(entry.numbers[0]);
    return 0;
}

void take_shader(VEX2_SHADER_MATERIAL const &from, MODEL_MATERIAL &to)
{
    using namespace MATERIAL_NAME;
    for (VEX2_SHADER_TEXTURE const &texture : from.textures) {
        if (texture.slot == diffuse_slot)
            to.diffuse = KN::to_utf8(texture.file);
        else if (texture.slot == normal_slot)
            to.normal = KN::to_utf8(texture.file);
    }
    GLTF::MATERIAL &material = to.material;
    material.diffuse.uv_set = uv_set_of(from, diffuse_slot);
    material.normal.uv_set = uv_set_of(from, normal_slot);

    VEX2_VECTOR4 colour{1, 1, 1, 1};
    take_value(from.vector4s, diffuse_colour, colour);
    float const parts[4] = {colour.x, colour.y, colour.z, colour.w};
    std::ranges::transform(parts, material.colour, [](float part) { return share(part, 1); });
    float rough = 1, metal = 0, cut_off = 0.5f;
    take_value(from.floats, roughness, rough);
    take_value(from.floats, metalness, metal);
    take_value(from.floats, alpha_cutoff, cut_off);
    material.roughness = share(rough, 1);
    material.metalness = share(metal, 0);
    material.cut_off = share(cut_off, 0.5f);
    std::uint32_t alpha = 0, both_sides = 0;
    take_value(from.ints, alpha_mode, alpha);
    take_value(from.ints, two_sided, both_sides);
    material.alpha = alpha == 1   ? GLTF::MATERIAL::CUT_OFF
                     : alpha == 2 ? GLTF::MATERIAL::BLENDED
                                  : GLTF::MATERIAL::SOLID;
    material.two_sided = both_sides != 0;
}

// The first bitmap is the colour; one whose name says so is the normal map. Of a blend, its first map counts.
void take_standard(VEX2_STANDARD_MATERIAL const &from, MODEL_MATERIAL &to)
{
    for (VEX2_MAP const *map : from.maps) {
        while (auto const *const blend = dynamic_cast<VEX2_BLEND_MAP const *>(map))
            map = blend->first.get();
        auto const *const bitmap = dynamic_cast<VEX2_BITMAP_MAP const *>(map);
        if (bitmap == nullptr || bitmap->bitmap.file.empty() || bitmap->bitmap.file == u"NONAME")
            continue;
        KN::String const file = KN::to_utf8(bitmap->bitmap.file);
        bool const is_normal = file.lower().find("_normal.") != file.npos;
        KN::String &name = is_normal ? to.normal : to.diffuse;
        if (!name.empty())
            continue;
        name = file;
        (is_normal ? to.material.normal : to.material.diffuse).uv_set =
            int(std::min(bitmap->uv.uv_set, most_uv_sets - 1));
    }
}

}  // namespace

std::uint32_t uv_sets_of(MODEL_MATERIAL const &material)
{
    int const diffuse = material.diffuse.empty() ? 0 : material.material.diffuse.uv_set + 1;
    int const normal = material.normal.empty() ? 0 : material.material.normal.uv_set + 1;
    return std::uint32_t(std::max(diffuse, normal));
}

MODEL_MATERIAL take_material(VEX2_MATERIAL const &from, MATERIAL_OPTIONS const &options)
{
    MODEL_MATERIAL made;
    GLTF::MATERIAL &material = made.material;
    material.name = KN::to_utf8(from.name);
    if (auto const *const shader = dynamic_cast<VEX2_SHADER_MATERIAL const *>(&from))
        take_shader(*shader, made);
    else if (auto const *const standard = dynamic_cast<VEX2_STANDARD_MATERIAL const *>(&from))
        take_standard(*standard, made);

    if (!options.with_pictures)
        made.diffuse = made.normal = {};
    if (options.tree && material.alpha != GLTF::MATERIAL::SOLID)
        material.two_sided = true;
    if (options.disable_alpha_test && material.alpha == GLTF::MATERIAL::CUT_OFF)
        material.alpha = GLTF::MATERIAL::SOLID;
    auto const type = options.lighting->find(KN::String(material.name).lower());
    if (type != options.lighting->end())
        material.extras.emplace_back("lighting", type->second);
    return made;
}

GLTF::MATERIAL with_textures(MODEL_MATERIAL const &material, TEXTURE_FILES &files, KN::String const &folder)
{
    GLTF::MATERIAL made = material.material;
    auto const use = [&](KN::String const &name, GLTF::TEXTURE &texture) {
        KN::String const file = name.empty() ? KN::String() : files.publish(name);
        if (!file.empty())
            texture.uri = GLTF::encoded_uri(GLTF::relative_path(folder + "/", file));
    };
    use(material.diffuse, made.diffuse);
    use(material.normal, made.normal);
    return made;
}

}  // namespace TOOLDATABUILDER
