#include "platform/exchange/export_materials.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "platform/exchange/picture.h"
#include "platform/gltf/document.h"
#include "platform/gltf/uri.h"
#include "scene/material_names.h"
#include "scene/scene.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

using namespace VEX2_LOADER;

namespace {

class TEXTURE_FILES {
public:
    TEXTURE_FILES(KN::String const &source, KN::String const &target, KN_STD::VECTOR<KN::String> &lines)
        : from(std::filesystem::path(KN::disk_path(source)).parent_path()),
          to(std::filesystem::path(KN::disk_path(target)).parent_path()), warnings(lines)
    {}

    // The URI of the picture's file beside the target; empty, with a warning, if there is none.
    std::string uri_for(KN::UniString const &file)
    {
        auto const [place, is_new] = known.try_emplace(file);
        if (is_new)
            place->second = publish(KN::disk_path(file));
        return place->second;
    }

private:
    std::string publish(KN::String const &file)
    {
        auto const without = [&](KN::String const &why) {
            warnings.push_back("texture '" + KN::printable(file) + "' " + why + "; the material goes without it");
            return std::string();
        };
        std::filesystem::path const path = from / file.c_str();
        KN::FileIn input;
        KN::String bytes;
        if (!input.open(KN::String(path.string()), false))
            return without("is not to be found");
        bytes.resize(input.size());
        if (input.read(bytes.data(), input.size()) != bytes.size())
            return without("cannot be read");

        char const *extension = ".png";
        if (bytes.compare(0, 3, "\xff\xd8\xff") == 0)
            extension = ".jpg";
        else if (is_plain_tga(bytes))
            bytes = png_bytes(picture_of_plain_tga(bytes));
        else if (bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0)
            return without("is no TGA without compression, PNG or JPEG");

        KN::String const stem = path.stem().string();
        KN::String name = stem + extension;
        for (unsigned n = 2; std::find(written.begin(), written.end(), name) != written.end(); ++n)
            name = stem + "-" + std::to_string(n) + extension;
        KN::String error;
        if (!KN::write_finished_file(KN::String((to / name.c_str()).string()), bytes, error))
            return without("cannot be written: " + error);
        written.push_back(name);
        return GLTF::encoded_uri(name);
    }

    std::filesystem::path from, to;
    KN_STD::VECTOR<KN::String> &warnings;
    std::map<KN::UniString, std::string> known;
    KN_STD::VECTOR<KN::String> written;
};

// The first value of the attribute of that name, or `otherwise`.
template <class ATTRIBUTE, class VALUE>
VALUE value_of(KN::DynamicArray<ATTRIBUTE> const &list, char16_t const *name, VALUE const &otherwise)
{
    for (ATTRIBUTE const &attribute : list)
        if (attribute.name == name && attribute.value != nullptr)
            return attribute.value->value();
    return otherwise;
}

float from_0_to_1(float value) { return value > 0 ? std::min(value, 1.0f) : 0; }

void take_shader(VEX2_SHADER_MATERIAL const &from, TEXTURE_FILES &files, GLTF::MATERIAL &to)
{
    for (VEX2_SHADER_TEXTURE const &texture : from.textures) {
        bool const normal = texture.slot == MATERIAL_NAME::normal_slot;
        GLTF::TEXTURE &slot = normal ? to.normal : to.diffuse;
        if ((!normal && texture.slot != MATERIAL_NAME::diffuse_slot) || !slot.uri.empty() || texture.file.empty())
            continue;
        slot.uri = files.uri_for(texture.file);
        for (VEX2_SHADER_SLOT const &entry : from.slots)
            if (entry.name == texture.slot)
                slot.uv_set = int(std::min(entry.numbers[0], 7u));
    }
    VEX2_VECTOR4 const colour = value_of(from.vector4s, MATERIAL_NAME::diffuse_colour, VEX2_VECTOR4{1, 1, 1, 1});
    to.colour[0] = from_0_to_1(colour.x);
    to.colour[1] = from_0_to_1(colour.y);
    to.colour[2] = from_0_to_1(colour.z);
    to.colour[3] = from_0_to_1(colour.w);
    to.roughness = from_0_to_1(value_of(from.floats, MATERIAL_NAME::roughness, 1.0f));
    to.metalness = from_0_to_1(value_of(from.floats, MATERIAL_NAME::metalness, 0.0f));
    std::uint32_t const alpha = value_of(from.ints, MATERIAL_NAME::alpha_mode, 0u);
    to.alpha = alpha == 1 ? GLTF::MATERIAL::CUT_OFF : alpha == 2 ? GLTF::MATERIAL::BLENDED : GLTF::MATERIAL::SOLID;
    to.cut_off = from_0_to_1(value_of(from.floats, MATERIAL_NAME::alpha_cutoff, 0.5f));
    to.two_sided = value_of(from.ints, MATERIAL_NAME::two_sided, 0u) != 0;
}

}  // namespace

void export_materials(VEX2 const &scene, KN::String const &source, KN::String const &target, GLTF::DOCUMENT &document,
                      KN_STD::VECTOR<KN::String> &warnings)
{
    TEXTURE_FILES files(source, target, warnings);
    for (VEX2_MATERIAL const *material : scene.materials) {
        GLTF::MATERIAL &made = document.materials.emplace_back();
        if (material == nullptr)
            continue;
        made.name = KN::to_utf8(material->name);
        if (auto const *shader = dynamic_cast<VEX2_SHADER_MATERIAL const *>(material); shader != nullptr) {
            take_shader(*shader, files, made);
        } else if (auto const *standard = dynamic_cast<VEX2_STANDARD_MATERIAL const *>(material)) {
            // Of the classic kind only the picture is certain: the first bitmap of the material.
            for (VEX2_MAP const *map : standard->maps) {
                auto const *bitmap = dynamic_cast<VEX2_BITMAP_MAP const *>(map);
                if (bitmap == nullptr || bitmap->bitmap.file == u"NONAME" || bitmap->bitmap.file.empty())
                    continue;
                made.diffuse.uri = files.uri_for(bitmap->bitmap.file);
                made.diffuse.uv_set = int(std::min(bitmap->uv.uv_set, 7u));
                break;
            }
        }
    }
}
