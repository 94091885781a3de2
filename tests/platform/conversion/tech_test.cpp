#include "Plugins/Vx2/host/rigid_model_tech_processor.h"

#include "model_scene.h"
#include "platform/gltf/geometry.h"

#include <gmock/gmock.h>

using namespace TEST_MODEL;
using TOOLDATABUILDER::MESH::RIGID_MODEL_TECH_PROCESSOR;

namespace {

class TECH_FILTER : public TOOLDATABUILDER::VEX2_FILTER {
public:
    bool mesh(VEX2_OBJECT const &mesh) const override { return *mesh.attributes.class_type() == u"TECH"; }
};

void add_reference(VEX2_LIST<VEX2_SCENE_REFERENCE> &list, char16_t const *path)
{
    list.append(new VEX2_SCENE_REFERENCE);
    list.back()->path = path;
}

}  // namespace

TEST(Tech, MeshesAndReferencesOfTheSceneAreWritten)
{
    TREE const tree;
    VEX2 scene;
    scene.hierarchy.add_node(u"node", -1, {0, 10, 0});
    scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"shown", 1));
    scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"wall", 1));
    scene.static_meshes[1]->attributes.strings[0].values[0] = u"TECH";
    scene.static_meshes[1]->attributes.add_string(u"hull", u"stone");
    scene.static_meshes[1]->attributes.add_string(u"hull", u"wood");
    add_reference(scene.references_b, u"..\\props\\Cart.v2.VX2");
    add_reference(scene.references_a, u"c:/art/Barrel.vx2");
    scene.seek(0);

    KN_STD::SET<KN::String> references;
    ASSERT_TRUE(RIGID_MODEL_TECH_PROCESSOR::convert_vex(scene, u"scene.vx2", tree.path("scratch"), true, TECH_FILTER(),
                                                        references));
    EXPECT_THAT(references, testing::ElementsAre("barrel/tech", "cart.v2/tech"));
    std::vector<GLTF::GEOMETRY> meshes;
    KN::String error;
    ASSERT_TRUE(GLTF::read_geometry(tree.at("scratch"), meshes, error)) << error;
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(meshes[0].name, "wall");
    EXPECT_EQ(meshes[0].texts["hull"], "stone");
    EXPECT_EQ(meshes[0].indices, (std::vector<std::uint32_t>{0, 2, 1, 1, 2, 3}));
    EXPECT_FLOAT_EQ(meshes[0].positions[4], 10.1f);  // wave(1, 0) on its node

    // A scene without tech meshes still gives a file, which holds nothing.
    scene.static_meshes[1]->attributes.strings[0].values[0] = u"DISPLAY";
    ASSERT_TRUE(RIGID_MODEL_TECH_PROCESSOR::convert_vex(scene, u"scene.vx2", tree.path("scratch"), true, TECH_FILTER(),
                                                        references));
    EXPECT_TRUE(GLTF::read_geometry(tree.at("scratch"), meshes, error)) << error;
    EXPECT_TRUE(meshes.empty());
}

// Every byte of a file is changed and every length cut: what is still read must hold together.
TEST(Tech, DamagedFilesAreRefusedOrReadWithinTheirBounds)
{
    TREE const tree;
    KN::String error;
    GLTF::GEOMETRY const triangle{"t", {{"a", "b"}}, {0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}};
    ASSERT_TRUE(GLTF::write_geometry({triangle}, {}, {}, tree.at("whole"), error)) << error;
    std::string const whole = tree.get("whole");

    auto const check = [&](std::string const &bytes) {
        tree.put("damaged", bytes);
        std::vector<GLTF::GEOMETRY> meshes;
        bool const read = GLTF::read_geometry(tree.at("damaged"), meshes, error);
        for (GLTF::GEOMETRY const &mesh : meshes)
            for (std::uint32_t const index : mesh.indices)
                EXPECT_LT(index, mesh.positions.size() / 3);
        return read;
    };
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(check(whole.substr(0, size))) << size << " bytes";
    for (std::size_t i = 0; i < whole.size(); ++i)
        for (char const value : {char(whole[i] ^ 1), '9', '\xff'}) {
            std::string changed = whole;
            changed[i] = value;
            check(changed);
        }
}
