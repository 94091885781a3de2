#include "model_scene.h"

#include <gmock/gmock.h>

using namespace TEST_MODEL;

static std::vector<double> times(std::vector<double> const &a, std::vector<double> const &b)  // column by column
{
    std::vector<double> product(16, 0.0);
    for (std::size_t c = 0; c < 4; ++c)
        for (std::size_t r = 0; r < 4; ++r)
            for (std::size_t k = 0; k < 4; ++k)
                product[c * 4 + r] += a[k * 4 + r] * b[c * 4 + k];
    return product;
}

static std::vector<double> local_matrix(nlohmann::json const &node)
{
    std::vector<double> const t = node.value("translation", std::vector<double>{0, 0, 0});
    std::vector<double> const q = node.value("rotation", std::vector<double>{0, 0, 0, 1});
    std::vector<double> const s = node.value("scale", std::vector<double>{1, 1, 1});
    double const x = q[0], y = q[1], z = q[2], w = q[3];
    return {s[0] * (1 - 2 * (y * y + z * z)),
            s[0] * 2 * (x * y + z * w),
            s[0] * 2 * (x * z - y * w),
            0,
            s[1] * 2 * (x * y - z * w),
            s[1] * (1 - 2 * (x * x + z * z)),
            s[1] * 2 * (y * z + x * w),
            0,
            s[2] * 2 * (x * z + y * w),
            s[2] * 2 * (y * z - x * w),
            s[2] * (1 - 2 * (x * x + y * y)),
            0,
            t[0],
            t[1],
            t[2],
            1};
}

// World matrices of all nodes; children stand behind their parents.
static std::vector<std::vector<double>> world_matrices(nlohmann::json const &nodes)
{
    std::vector<std::vector<double>> world;
    for (auto const &node : nodes)
        world.push_back(local_matrix(node));
    for (std::size_t i = 0; i < nodes.size(); ++i)
        for (auto const &child : nodes[i].value("children", nlohmann::json::array()))
            world[child.get<std::size_t>()] = times(world[i], world[child.get<std::size_t>()]);
    return world;
}

// The nodes move from the start on, so the pose of the model is that of the start and not that of the scene's time.
TEST(Skin, JointsInTheBindPoseLeaveVerticesWhereTheyWereBound)
{
    TREE const tree;
    VEX2 scene;
    scene.info.start_time = 2;
    add_flag(scene, 3, 3);
    VEX2_VECTOR const uneven{1, 2, 0.5f};
    scene.hierarchy.nodes[1].scale = constant_channel<VEX2_VECTOR_CHANNEL>(uneven);
    scene.hierarchy.nodes[2].translation =
        TEST_SCENE::ramp<VEX2_VECTOR_CHANNEL>(VEX2_VECTOR{0, 0, 0}, VEX2_VECTOR{10, 20, 30});
    scene.prepare_weighted_meshes();
    ASSERT_TRUE(convert(scene, tree, "models/flag"));
    MODEL const model(tree, "models/flag");

    auto const &skin = model.json["skins"][0];
    auto const world = world_matrices(model.json["nodes"]);
    auto const inverse = model.array(skin["inverseBindMatrices"]);
    ASSERT_EQ(skin["joints"].size(), 3u);
    for (std::size_t j = 0; j < 3; ++j) {
        std::vector<double> const bound(inverse.begin() + std::ptrdiff_t(j) * 16,
                                        inverse.begin() + std::ptrdiff_t(j + 1) * 16);
        auto const moved = times(world[skin["joints"][j].get<std::size_t>()], bound);
        for (std::size_t i = 0; i < 16; ++i)
            EXPECT_NEAR(moved[i], i % 5 == 0 ? 1 : 0, 1e-5) << "joint " << j << " number " << i;
    }
    auto const positions = model.attribute(0, "POSITION");
    EXPECT_EQ(*std::max_element(positions.begin(), positions.end()), 1);  // the sheet as it was bound
}

TEST(Skin, TheStrongestInfluencesAreKeptOrAllOfThem)
{
    TREE const tree;
    VEX2 scene;
    add_flag(scene, 2, 6);  // weights 2^i + x
    for (bool const all : {false, true}) {
        SCOPED_TRACE(all);
        ASSERT_TRUE(convert(scene, tree, "models/weights", {false, {}, all, ""}));
        MODEL const model(tree, "models/weights");
        ASSERT_EQ(model.json["meshes"][0]["primitives"][0]["attributes"].contains("JOINTS_1"), all);
        auto const positions = model.attribute(0, "POSITION");
        auto const joints = model.attribute(0, "JOINTS_0"), weights = model.attribute(0, "WEIGHTS_0");
        for (std::size_t i = 0; i < positions.size() / 3; ++i) {
            double const x = positions[i * 3];
            double const sum = all ? 63 + 6 * x : 4 + 8 + 16 + 32 + 4 * x;
            for (std::size_t k = 0; k < 4; ++k) {
                EXPECT_EQ(joints[i * 4 + k], 5 - double(k));
                EXPECT_NEAR(weights[i * 4 + k], (double(1u << (5 - k)) + x) / sum, 1e-6);
            }
        }
    }
}

TEST(Skin, OddInfluencesAreSetRight)
{
    TREE const tree;
    VEX2 scene;
    VEX2_WEIGHTED_MESH *const mesh = add_flag(scene, 1);
    mesh->matrix_index = 1;
    mesh->vertices[0].influences.clear();              // hangs on the mesh's own node
    mesh->vertices[1].influences[0].weight = -3;       // is none
    mesh->vertices[2].influences[0].matrix_index = 1;  // the same node twice
    ASSERT_TRUE(convert(scene, tree, "models/odd"));
    MODEL const model(tree, "models/odd");
    auto const joints = model.attribute(0, "JOINTS_0"), weights = model.attribute(0, "WEIGHTS_0");
    int single = 0;
    for (std::size_t i = 0; i < 4; ++i)
        single += joints[i * 4] == 1 && weights[i * 4] == 1 && weights[i * 4 + 1] == 0;
    EXPECT_EQ(single, 3);
}
