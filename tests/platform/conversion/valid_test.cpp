// The validator of the file format's makers is the judge of what comes out.

#include "model_scene.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace TEST_MODEL;

static std::string tga_2x2()
{
    std::string bytes(18, '\0');
    bytes[2] = 2;
    bytes[12] = bytes[14] = 2;
    bytes[16] = 24;
    return bytes + std::string(12, '\x7f');
}

TEST(Validator, FindsNoErrorInAnyModel)
{
    TREE const tree;
    tree.put("raw_data/props/wall paint.tga", tga_2x2());
    std::string files;
    auto const make = [&](char const *name, SETTINGS const &settings, auto const &fill) {
        VEX2 scene;
        fill(scene);
        ASSERT_TRUE(convert(scene, tree, std::string("models/") + name, settings)) << name;
        files += " '" + tree.at("working_data/models/" + std::string(name)) + "'";
    };
    make("textured", {}, [](VEX2 &scene) {
        add_material(scene, u"paint", u"wall paint.tga");
        add_material(scene, u"lost", u"nowhere.tga");
        scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"painted", 3, 0));
        scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"plain", 3, 1));
        VEX2_STATIC_MESH *const bare = sheet<VEX2_STATIC_MESH>(u"bare", 3, 0);
        for (VEX2_VERTEX &vertex : bare->vertices)
            vertex.uvws.clear();
        scene.static_meshes.append(bare);
    });
    make("made levels", {false, {60, 20}, false, ""}, [](VEX2 &scene) {
        VEX2_STATIC_MESH *const mesh = sheet<VEX2_STATIC_MESH>(u"sheet", 300);  // more vertices than 16 bits count
        mesh->colour_flag = 1;
        mesh->vertices[7].colour = {2, -1, 0.5f, 1};
        mesh->vertices[8].normal = {};
        scene.static_meshes.append(mesh);
    });
    make("named levels", {}, [](VEX2 &scene) {
        for (auto const *const name : {u"a_lod0", u"b_lod0", u"a_lod1"})
            scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(name, 2, -1));
    });
    for (bool const all : {false, true})
        make(all ? "all influences" : "skinned", {false, {50}, all, tree.at("working_data/models/described")},
             [](VEX2 &scene) { add_flag(scene, 6, 7); });
    files += " '" + tree.at("working_data/models/described") + "'";
    make("morphed", {}, [](VEX2 &scene) {
        VEX2_MORPH_MESH *const mesh = sheet<VEX2_MORPH_MESH>(u"morph", 3);
        for (unsigned t = 0; t < 3; ++t) {
            mesh->targets.append().value = constant_channel<VEX2_FLOAT_CHANNEL>(0.1f);
            mesh->vertices[t].deltas.append(VEX2_MORPH_DELTA{{0, 1, 0}, t});
        }
        scene.morph_meshes.append(mesh);
        scene.animated_meshes.append(TEST_SCENE::animated_triangle());
    });
    EXPECT_EQ(std::system((std::string(GLTF_VALIDATE) + files).c_str()), 0);
}
