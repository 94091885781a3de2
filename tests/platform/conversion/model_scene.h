// Scenes to convert, and a look into the models that come of them.
#pragma once

#include "Plugins/Vx2/host/model_processor.h"
#include "Plugins/Vx2/host/model_statistics.h"
#include "Plugins/Vx2/host/vex2_filter.h"
#include "foundation/messages.h"
#include "platform/build_host/project.h"
#include "scene/material_names.h"
#include "scene/scene.h"
#include "tests/scene/make_scene.h"

#include <nlohmann/json.hpp>

namespace TEST_MODEL {

using namespace VEX2_LOADER;
using TOOLDATABUILDER::MODEL_PROCESSOR;

// The lines that the libraries put out while it lives.
class LINES final : public KN::MessageSink {
public:
    LINES() : before(KN::set_thread_message_sink(this)) {}
    ~LINES() { KN::set_thread_message_sink(before); }
    void message(KN::String const &line, int level) override { of_level[level].push_back(line); }
    bool goes_on() const override { return yeses != 0 && (yeses < 0 || yeses-- > 0); }
    std::vector<std::string> of_level[3];
    mutable int yeses = -1;  // after so many questions work is to end early; negative: never

private:
    KN::MessageSink *before;
};

// An asset tree in a scratch folder: raw_data and working_data.
class TREE : public TEST_SCENE::SCRATCH_FOLDER {
public:
    TREE()
    {
        for (char const *const sub : {"raw_data/props", "working_data/models", "working_data/tiles"})
            std::filesystem::create_directories(folder / sub);
        set_current_roots(usual_roots(QString::fromStdString(folder.string())));
    }
    KN::String at(std::string const &path) const { return (folder / path).string(); }
};

inline VEX2_VECTOR wave(float x, float z) { return {x, 0.1f * x * x - 0.05f * z * z, z}; }

// A curved sheet of `side` x `side` squares, up to 1 m wide, seen from above, in one section of material `material`.
template <class MESH>
MESH *sheet(char16_t const *name, unsigned side, int material = 0)
{
    MESH *const mesh = new MESH;
    mesh->name = name;
    mesh->attributes.add_string(u"class_TYPE", u"DISPLAY");
    for (unsigned z = 0; z <= side; ++z) {
        for (unsigned x = 0; x <= side; ++x) {
            auto &vertex = mesh->vertices.append();
            float const u = float(x) / float(side), v = float(z) / float(side);
            vertex.position = wave(u, v);
            vertex.normal = {0, 1, 0};
            vertex.uvws.append(VEX2_VECTOR{u, 1 - v, 0});
            vertex.frames.append(VEX2_TANGENT_FRAME{{0, 0, -1}, {1, 0, 0}});
        }
    }
    VEX2_POLYGON_SET &section = mesh->sections.append();
    section.material_index = material;
    for (unsigned z = 0; z < side; ++z) {
        for (unsigned x = 0; x < side; ++x) {
            unsigned const a = z * (side + 1) + x, b = a + 1, c = a + side + 1, d = c + 1;
            section.triangles.append(VEX2_TRIANGLE{{a, c, b}});
            section.triangles.append(VEX2_TRIANGLE{{b, c, d}});
        }
    }
    return mesh;
}

// Two nodes, the second a metre above the first, and the sheet hanging on both.
inline VEX2_WEIGHTED_MESH *add_flag(VEX2 &scene, unsigned side, unsigned influences = 2)
{
    for (unsigned i = 0; i < influences; ++i)
        scene.hierarchy.add_node(u"bone", int(i) - 1, {0, i == 0 ? 0.0f : 1.0f, 0}, {0, 0.6f, 0, 0.8f});
    VEX2_WEIGHTED_MESH *const mesh = sheet<VEX2_WEIGHTED_MESH>(u"flag", side);
    for (VEX2_WEIGHTED_VERTEX &vertex : mesh->vertices) {
        vertex.bind_position = vertex.position;
        vertex.bind_normal = vertex.normal;
        for (unsigned i = 0; i < influences; ++i) {
            VEX2_INFLUENCE &influence = vertex.influences.append();
            influence.matrix_index = i;
            influence.weight = float(1u << i) + vertex.position.x;
        }
    }
    scene.weighted_meshes.append(mesh);
    scene.prepare_weighted_meshes();
    return mesh;
}

inline VEX2_SHADER_MATERIAL *add_material(VEX2 &scene, char16_t const *name, char16_t const *picture = nullptr)
{
    VEX2_SHADER_MATERIAL *const material = new VEX2_SHADER_MATERIAL;
    material->name = name;
    material->shader = MATERIAL_NAME::shader;
    if (picture != nullptr) {
        VEX2_SHADER_TEXTURE &texture = material->textures.append();
        texture.slot = MATERIAL_NAME::diffuse_slot;
        texture.file = picture;
    }
    scene.materials.append(material);
    return material;
}

struct SETTINGS {
    bool single_lod = false;
    KN_STD::VECTOR<unsigned char> qualities;
    bool all_influences = false;
    KN::String description;
    KN::String textures = "textures";
};

// Converts everything in the scene to working_data/models/`name`; true if that worked.
inline bool convert(VEX2 &scene, TREE const &tree, std::string const &name, SETTINGS const &settings = {},
                    MODEL_STATISTICS *statistics = nullptr)
{
    MODEL_PROCESSOR processor(settings.textures, false, "", settings.single_lod, tree.at("raw_data/absent.xml"),
                              {25, 50}, settings.qualities);
    processor.target = tree.at("working_data/" + name);
    processor.variable_bones_per_vert = settings.all_influences;
    processor.description_file = settings.description;
    scene.seek(0);
    return processor.load_from_vex2(scene, TOOLDATABUILDER::VEX2_FILTER(), statistics,
                                    tree.at("raw_data/props/scene.vx2"), false) &&
           processor.write(processor.target, statistics);
}

// A binary glTF file taken apart.
class MODEL {
public:
    MODEL(TREE const &tree, std::string const &name)
    {
        std::string const bytes = tree.get("working_data/" + name);
        std::uint32_t json_size = 0;
        std::memcpy(&json_size, bytes.data() + 12, 4);
        json = nlohmann::json::parse(bytes.substr(20, json_size));
        buffer = bytes.substr(std::min<std::size_t>(bytes.size(), 28 + json_size));
    }

    nlohmann::json json;

    // The numbers of an array, whatever their type on disk.
    std::vector<double> array(nlohmann::json const &accessor_index) const
    {
        auto const &accessor = json["accessors"][accessor_index.get<std::size_t>()];
        auto const &view = json["bufferViews"][accessor["bufferView"].get<std::size_t>()];
        static std::map<std::string, std::size_t> const counts = {
            {"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT4", 16}};
        std::size_t const components = counts.at(accessor["type"]), count = accessor["count"];
        int const type = accessor["componentType"];
        std::size_t const size = type == 5121 ? 1 : type == 5123 ? 2 : 4;
        std::size_t const stride = view.value("byteStride", size * components);
        std::vector<double> numbers;
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t c = 0; c < components; ++c) {
                char const *const at = buffer.data() + view.value("byteOffset", std::size_t(0)) + i * stride + c * size;
                std::uint32_t whole = 0;
                float real = 0;
                std::memcpy(&whole, at, size);
                std::memcpy(&real, at, size == 4 ? 4 : 0);
                numbers.push_back(type == 5126 ? double(real) : double(whole));
            }
        }
        return numbers;
    }
    std::vector<double> attribute(std::size_t mesh, std::string const &name) const
    {
        return array(json["meshes"][mesh]["primitives"][0]["attributes"][name]);
    }
    std::size_t triangles(std::size_t mesh) const
    {
        std::size_t indices = 0;
        for (auto const &primitive : json["meshes"][mesh]["primitives"])
            indices += array(primitive["indices"]).size();
        return indices / 3;
    }

private:
    std::string buffer;
};

}  // namespace TEST_MODEL
