#include "model_scene.h"

#include <gmock/gmock.h>

using namespace TEST_MODEL;

namespace {

constexpr unsigned side = 257;

std::vector<float> samples(std::string const &bytes, unsigned count)
{
    EXPECT_EQ(bytes.size(), 32 + std::size_t(count) * count * 4);
    std::vector<float> values(std::size_t(count) * count);
    std::memcpy(values.data(), bytes.data() + 32, values.size() * 4);
    return values;
}

}  // namespace

// Ground of 10 x 20 m that rises along x, with a gap in one corner and a spike in the middle of a square of the map.
TEST(Tile, HeightsDeltasAndOutlinesFollowTheMesh)
{
    TREE const tree;
    VEX2 scene;
    VEX2_STATIC_MESH *const ground = sheet<VEX2_STATIC_MESH>(u"ground", 4);
    for (VEX2_VERTEX &vertex : ground->vertices)
        vertex.position = {vertex.position.x * 10, vertex.position.x * 5, vertex.position.z * 20};
    ground->sections[0].triangles.resize(30);  // without the last square
    scene.static_meshes.append(ground);
    ASSERT_TRUE(convert(scene, tree, "tiles/ground", {true, {}, false, ""}));

    auto const heights = samples(tree.get("working_data/tiles/hf_height_map.data"), side);
    for (unsigned row = 0; row < side; row += 16)
        for (unsigned column = 0; column < side; column += 16)
            if (row <= 192 || column <= 192) {
                EXPECT_NEAR(heights[row * side + column], 5.0f * float(column) / 256, 1e-5) << row << " " << column;
            }
    for (float const height : heights)
        EXPECT_TRUE(height >= 0 && height <= 5);
    for (float const delta : samples(tree.get("working_data/tiles/hf_height_map_mesh_delta.data"), side - 1))
        EXPECT_NEAR(delta, 0, 1e-5);
    std::string const outlines = tree.get("working_data/tiles/terrain_outlines.xml");
    EXPECT_THAT(outlines, testing::HasSubstr("closed=\"1\""));
    EXPECT_THAT(outlines, testing::Not(testing::HasSubstr("closed=\"0\"")));
    std::size_t points = 0;
    for (std::size_t at = outlines.find("<point"); at != outlines.npos; at = outlines.find("<point", at + 1))
        ++points;
    EXPECT_EQ(points, 17u);  // 16 edges around, the first point again at the end

    ground->vertices[12].position = {5.01f, 102.5f, 10.01f};
    ASSERT_TRUE(convert(scene, tree, "tiles/ground", {true, {}, false, ""}));
    auto const deltas = samples(tree.get("working_data/tiles/hf_height_map_mesh_delta.data"), side - 1);
    EXPECT_GT(*std::max_element(deltas.begin(), deltas.end()), 0.1f);
}

// A wall across the diagonal and one along an axis.
TEST(Tile, WallsAreNoGround)
{
    for (float const depth : {1.0f, 0.0f}) {
        TREE const tree;
        LINES lines;
        VEX2 scene;
        VEX2_STATIC_MESH *const wall = sheet<VEX2_STATIC_MESH>(u"wall", 1);
        for (VEX2_VERTEX &vertex : wall->vertices)
            vertex.position = {vertex.position.x, vertex.position.z, vertex.position.x * depth};
        scene.static_meshes.append(wall);
        EXPECT_TRUE(convert(scene, tree, "tiles/wall"));
        EXPECT_THAT(lines.of_level[1], testing::ElementsAre(testing::HasSubstr("no extent seen from above")));
        EXPECT_FALSE(tree.holds("working_data/tiles/hf_height_map.data"));
    }
}
