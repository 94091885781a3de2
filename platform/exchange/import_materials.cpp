#include "platform/exchange/import_materials.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "platform/exchange/picture.h"
#include "scene/material_names.h"
#include "scene/scene.h"

#include <assimp/GltfMaterial.h>
#include <assimp/commonMetaData.h>
#include <assimp/scene.h>
#include <filesystem>

using namespace VEX2_LOADER;

namespace {

bool is_word(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

int hex_digit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    c = char(c | 0x20);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

KN::String percent_decoded(KN::String const &text)
{
    KN::String decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const escape =
            text[i] == '%' && i + 2 < text.size() && hex_digit(text[i + 1]) >= 0 && hex_digit(text[i + 2]) >= 0;
        decoded += escape ? char(hex_digit(text[i + 1]) * 16 + hex_digit(text[i + 2])) : text[i];
        i += escape ? 2 : 0;
    }
    return decoded;
}

KN::String without_scheme(KN::String path)
{
    for (char &c : path)
        c = c == '\\' ? '/' : c;
    if (path.compare(0, 7, "file://") == 0)
        path.erase(0, 7);
    return path;
}

bool read_whole(KN::String const &path, KN::String &bytes)
{
    KN::FileIn file;
    if (!file.open(path, false))
        return false;
    bytes.resize(file.size());
    return file.read(bytes.data(), file.size()) == bytes.size();
}

template <class CHANNEL, class ATTRIBUTE, class VALUE>
void add_value(KN::DynamicArray<ATTRIBUTE> &list, char16_t const *name, VALUE const &value)
{
    ATTRIBUTE &attribute = list.append();
    attribute.name = name;
    attribute.value = constant_channel<CHANNEL>(value);
}

// The first of `types` that the material has a picture for.
bool texture_of(aiMaterial const &material, std::initializer_list<aiTextureType> types, aiTextureType &type,
                aiString &path)
{
    for (aiTextureType const candidate : types) {
        if (material.GetTexture(candidate, 0, &path) == AI_SUCCESS && path.length != 0) {
            type = candidate;
            return true;
        }
    }
    return false;
}

class MATERIAL_MAKER {
public:
    MATERIAL_MAKER(aiScene const &from, aiMaterial const &with, IMPORT_TEXTURES &files, IMPORT_NOTES &lines)
        : material(with), textures(files), notes(lines)
    {
        aiString format;
        is_gltf = from.mMetaData != nullptr && from.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, format) &&
                  std::string_view(format.C_Str()).find("glTF") != std::string_view::npos;
        colour_multiplies =
            is_gltf || !from.mMetaData || std::string_view(format.C_Str()).find("FBX") == std::string_view::npos;
    }

    VEX2_SHADER_MATERIAL *make()
    {
        aiString name;
        material.Get(AI_MATKEY_NAME, name);
        label = name.length != 0 ? KN::String(name.C_Str()) : KN::String("default");
        made = new VEX2_SHADER_MATERIAL;
        made->name = KN::from_utf8(label);
        made->shader = MATERIAL_NAME::shader;

        bool const textured =
            add_texture(MATERIAL_NAME::diffuse_slot, "diffuse", {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE});
        add_texture(MATERIAL_NAME::normal_slot, "normal", {aiTextureType_NORMALS, aiTextureType_NORMAL_CAMERA});
        if (material.GetTextureCount(aiTextureType_HEIGHT) != 0)
            notes.add("material '" + label + "': its bump map is left out; use a normal map");
        note_other_pictures();
        add_numbers(textured);
        return made;
    }

private:
    // What a scene's material has no slot for.
    void note_other_pictures()
    {
        constexpr std::pair<aiTextureType, char const *> others[] = {
            {aiTextureType_EMISSIVE, "emissive"},           {aiTextureType_METALNESS, "metalness"},
            {aiTextureType_DIFFUSE_ROUGHNESS, "roughness"}, {aiTextureType_LIGHTMAP, "occlusion"},
            {aiTextureType_SPECULAR, "specular"},           {aiTextureType_OPACITY, "opacity"}};
        for (auto const &[type, use] : others)
            if (material.GetTextureCount(type) != 0)
                notes.add("material '" + label + "': its " + use + " texture is left out");
    }

    bool add_texture(char16_t const *slot, char const *use, std::initializer_list<aiTextureType> types)
    {
        aiTextureType type = aiTextureType_NONE;
        aiString path;
        if (!texture_of(material, types, type, path))
            return false;
        KN::String const file = textures.file_for(path.C_Str(), label, use);
        if (file.empty())
            return false;
        VEX2_SHADER_TEXTURE &texture = made->textures.append();
        texture.slot = slot;
        texture.file = KN::from_utf8(file);
        int uv_set = 0;
        if (material.Get(AI_MATKEY_UVWSRC(type, 0), uv_set) == AI_SUCCESS && uv_set > 0) {
            VEX2_SHADER_SLOT &entry = made->slots.append();
            entry.name = slot;
            entry.numbers[0] = std::uint32_t(uv_set);
        }
        aiUVTransform moved;
        if (material.Get(AI_MATKEY_UVTRANSFORM(type, 0), moved) == AI_SUCCESS &&
            (moved.mRotation != 0 || moved.mScaling != aiVector2D(1, 1) || moved.mTranslation != aiVector2D(0, 0)))
            notes.add("material '" + label + "': the transform of its texture coordinates is left out");
        return true;
    }

    void add_numbers(bool textured)
    {
        aiColor4D colour(1, 1, 1, 1);
        bool has_colour = material.Get(AI_MATKEY_BASE_COLOR, colour) == AI_SUCCESS;
        if (!has_colour && (colour_multiplies || !textured))  // in FBX a texture takes the colour's place
            has_colour = material.Get(AI_MATKEY_COLOR_DIFFUSE, colour) == AI_SUCCESS;
        float opacity = 1;
        if (!is_gltf && material.Get(AI_MATKEY_OPACITY, opacity) == AI_SUCCESS && opacity < 1)
            colour.a = opacity;
        if (has_colour || opacity < 1)
            add_value<VEX2_VECTOR4_CHANNEL>(made->vector4s, MATERIAL_NAME::diffuse_colour,
                                            VEX2_VECTOR4{colour.r, colour.g, colour.b, colour.a});

        float number = 0;
        if (material.Get(AI_MATKEY_ROUGHNESS_FACTOR, number) == AI_SUCCESS)
            add_value<VEX2_FLOAT_CHANNEL>(made->floats, MATERIAL_NAME::roughness, number);
        if (material.Get(AI_MATKEY_METALLIC_FACTOR, number) == AI_SUCCESS)
            add_value<VEX2_FLOAT_CHANNEL>(made->floats, MATERIAL_NAME::metalness, number);

        aiString mode;
        material.Get(AI_MATKEY_GLTF_ALPHAMODE, mode);
        std::uint32_t const alpha = mode == aiString("MASK") ? 1 : mode == aiString("BLEND") || opacity < 1 ? 2 : 0;
        if (alpha != 0)
            add_value<VEX2_INT_CHANNEL>(made->ints, MATERIAL_NAME::alpha_mode, alpha);
        if (alpha == 1 && material.Get(AI_MATKEY_GLTF_ALPHACUTOFF, number) == AI_SUCCESS)
            add_value<VEX2_FLOAT_CHANNEL>(made->floats, MATERIAL_NAME::alpha_cutoff, number);
        int two_sided = 0;
        if (material.Get(AI_MATKEY_TWOSIDED, two_sided) == AI_SUCCESS && two_sided != 0)
            add_value<VEX2_INT_CHANNEL>(made->ints, MATERIAL_NAME::two_sided, std::uint32_t(1));
    }

    aiMaterial const &material;
    IMPORT_TEXTURES &textures;
    IMPORT_NOTES &notes;
    bool is_gltf = false;
    bool colour_multiplies = true;
    KN::String label;
    VEX2_SHADER_MATERIAL *made = nullptr;
};

}  // namespace

KN::String file_name_part(KN::String const &text)
{
    KN::String part;
    for (char const c : text)
        part += is_word(c) ? c : '_';
    constexpr std::size_t longest = 60;
    return part.empty() ? KN::String("unnamed") : KN::String(part.substr(0, longest));
}

IMPORT_TEXTURES::IMPORT_TEXTURES(aiScene const &from, KN::String model_path, KN::String to, KN::String scene_stem,
                                 IMPORT_NOTES &lines)
    : source(from), model(std::move(model_path)), folder(std::move(to)), stem(std::move(scene_stem)), notes(lines)
{}

KN::String IMPORT_TEXTURES::file_for(KN::String const &reference, KN::String const &material, char const *use)
{
    auto const [place, is_new] = known.try_emplace({reference, use});
    if (is_new)
        place->second = write(reference, material, use);
    return place->second;
}

// The picture's file as it stands, or with `raw` the four-byte pixels of an embedded one.
bool IMPORT_TEXTURES::take_bytes(KN::String const &reference, KN::String &bytes, bool &raw)
{
    raw = false;
    if (aiTexture const *const embedded = source.GetEmbeddedTexture(reference.c_str()); embedded != nullptr) {
        raw = embedded->mHeight != 0;
        std::size_t const size =
            raw ? std::size_t(embedded->mWidth) * embedded->mHeight * sizeof(aiTexel) : embedded->mWidth;
        bytes.assign(reinterpret_cast<char const *>(embedded->pcData), size);
        return true;
    }
    std::filesystem::path const beside = std::filesystem::path(KN::disk_path(model)).parent_path();
    for (KN::String const &text : {without_scheme(reference), percent_decoded(without_scheme(reference))}) {
        std::filesystem::path const path(text.c_str());
        if (path.is_relative() && read_whole((beside / path).string(), bytes))
            return true;
        for (char const *const sub : {".", "textures", "Textures"})
            if (read_whole((beside / sub / path.filename()).string(), bytes))
                return true;
    }
    return false;
}

KN::String IMPORT_TEXTURES::write(KN::String const &reference, KN::String const &material, char const *use)
{
    KN::String const what = "material '" + material + "': " + use + " texture '" + reference + "'";
    KN::String bytes, error;
    bool raw = false;
    if (!take_bytes(reference, bytes, raw)) {
        notes.add(what + " is not to be found; the material goes without it");
        return {};
    }
    PICTURE picture;
    if (raw) {
        aiTexture const &embedded = *source.GetEmbeddedTexture(reference.c_str());
        if (embedded.mWidth > PICTURE::largest || embedded.mHeight > PICTURE::largest) {
            notes.add(what + " is larger than " + std::to_string(PICTURE::largest) +
                      " pixels either way; the material goes without it");
            return {};
        }
        picture.width = embedded.mWidth;
        picture.height = embedded.mHeight;
        for (std::size_t i = 0; i < std::size_t(picture.width) * picture.height; ++i) {
            aiTexel const &texel = embedded.pcData[i];
            picture.pixels.insert(picture.pixels.end(), {texel.r, texel.g, texel.b, texel.a});
        }
    } else if (!decode_picture(bytes.data(), bytes.size(), picture, error)) {
        notes.add(what + ": " + error + "; the material goes without it");
        return {};
    }

    KN::String const base = stem + "_" + file_name_part(material);
    KN::String name = base + "_" + use + ".tga";
    for (unsigned n = 2; std::find(written.begin(), written.end(), name) != written.end(); ++n)
        name = base + "-" + std::to_string(n) + "_" + use + ".tga";
    if (!KN::write_finished_file(folder + "/" + name, tga_bytes(picture), error)) {
        notes.add(what + ": " + error + "; the material goes without it");
        return {};
    }
    written.push_back(name);
    return name;
}

KN_STD::VECTOR<int> add_materials(aiScene const &source, VEX2 &scene, IMPORT_TEXTURES &textures, IMPORT_NOTES &notes)
{
    KN_STD::VECTOR<int> numbers(source.mNumMaterials, -1);
    for (unsigned m = 0; m < source.mNumMeshes; ++m) {
        unsigned const used = source.mMeshes[m]->mMaterialIndex;
        if (used >= source.mNumMaterials || numbers[used] >= 0)
            continue;
        numbers[used] = int(scene.materials.count);
        scene.materials.append(MATERIAL_MAKER(source, *source.mMaterials[used], textures, notes).make());
    }
    return numbers;
}
