#include "scene/check.h"
#include "tests/scene/make_scene.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace TEST_SCENE;

void expect_near(VEX2_VECTOR const &found, VEX2_VECTOR const &expected, float tolerance = 1e-5f)
{
    EXPECT_NEAR(found.x, expected.x, tolerance);
    EXPECT_NEAR(found.y, expected.y, tolerance);
    EXPECT_NEAR(found.z, expected.z, tolerance);
}

// The node's matrix times a point.
VEX2_VECTOR placed(VEX2_MATRIX const &m, VEX2_VECTOR const &p)
{
    return {m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
            m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
            m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]};
}

TEST(Hierarchy, WorldMatricesAreParentTimesTranslationRotationScale)
{
    VEX2 scene;
    add_hierarchy(scene);
    scene.hierarchy.seek(10);
    // The child scales by 2, turns a quarter about z, goes to (0, 1, 0); the root goes to (1, 2, 3).
    expect_near(placed(scene.hierarchy.nodes[1].matrix, {1, 0, 5}), {1, 5, 13});
    expect_near(placed(scene.hierarchy.nodes[0].matrix, {0, 0, 0}), {1, 2, 3});
    scene.hierarchy.advance(-10);
    expect_near(placed(scene.hierarchy.nodes[1].matrix, {1, 0, 5}), {3, 3, 13});
}

// A copy must stand on its own nodes: the parent pointers of the first scene die with it.
TEST(Hierarchy, CopiedNodesFollowTheirOwnParents)
{
    VEX2 second;
    {
        VEX2 first;
        add_hierarchy(first);
        first.hierarchy.seek(0);
        second.hierarchy.nodes = first.hierarchy.nodes;
        EXPECT_EQ(second.hierarchy.nodes[1].parent, nullptr);
    }
    second.hierarchy.nodes[0].translation->values[0] = {100, 0, 0};
    second.seek(0);
    expect_near(placed(second.hierarchy.nodes[1].matrix, {0, 0, 0}), {100, 1, 0});
    // Growing moves the nodes.
    for (int i = 0; i < 100; ++i)
        second.hierarchy.add_node(u"more", 1, {0, 0, 0});
    second.seek(0);
    expect_near(placed(second.hierarchy.nodes[90].matrix, {0, 0, 0}), {100, 1, 0});
}

VEX2_WEIGHTED_VERTEX &weighted_vertex(VEX2 &scene, unsigned i) { return scene.weighted_meshes[0]->vertices[i]; }

TEST(Skinning, TheStartPoseGivesTheBindPoseBack)
{
    auto scene = make_full_scene();
    for (unsigned i = 0; i < 3; ++i) {
        VEX2_WEIGHTED_VERTEX const &vertex = weighted_vertex(*scene, i);
        expect_near(vertex.position, vertex.bind_position);
        expect_near(vertex.normal, vertex.bind_normal);
        expect_near(vertex.frames[0].tangent, {1, 0, 0});
    }
}

TEST(Skinning, AVertexIsTheWeightedSumOfItsNodes)
{
    auto scene = make_full_scene();
    scene->seek(10);
    // At the start pose the child stood at (1, 3, 3) with scale 2. Now it has turned a quarter about z.
    VEX2_WEIGHTED_VERTEX const &vertex = weighted_vertex(*scene, 1);
    VEX2_VECTOR const bind = vertex.bind_position;  // (1, 0, 0): (0, -3, -3) from the child, then turned: (3, 0, -3)
    VEX2_VECTOR const turned = {1 + 3, 3 + 0, 3 - 3};
    expect_near(vertex.position, {0.25f * bind.x + 0.75f * turned.x, 0.25f * bind.y + 0.75f * turned.y, 0});
    expect_near(vertex.normal, {0, 0, 1});
    // The tangent: a quarter of (1, 0, 0) and three quarters of (0, 1, 0), four times as long under the scale,
    // normalised.
    float const length = std::sqrt(0.25f * 0.25f + 3 * 3);
    expect_near(vertex.frames[0].tangent, {0.25f / length, 3 / length, 0});
}

TEST(Skinning, ShortFrameVectorsAreNotNormalised)
{
    VEX2 scene;
    scene.hierarchy.add_node(u"node", -1, {0, 0, 0});
    scene.weighted_meshes.append(triangle_mesh<VEX2_WEIGHTED_MESH>(u"mesh", [](VEX2_WEIGHTED_VERTEX &vertex, unsigned) {
        vertex.frames[0] = {{0.0999f, 0, 0}, {0.125f, 0, 0}};
        vertex.influences.append(VEX2_INFLUENCE{0, 1, {}, {}});
        vertex.bind_normal = {0, 0, 4};
    }));
    scene.prepare_weighted_meshes();
    scene.seek(0);
    expect_near(weighted_vertex(scene, 0).frames[0].binormal, {0.0999f, 0, 0});
    expect_near(weighted_vertex(scene, 0).frames[0].tangent, {1, 0, 0});
    expect_near(weighted_vertex(scene, 0).normal, {0, 0, 1});
}

TEST(Skinning, RefreshTakesTheFramesAnewAndLeavesTheRest)
{
    auto scene = make_full_scene();
    scene->seek(10);
    VEX2_WEIGHTED_VERTEX &vertex = weighted_vertex(*scene, 0);
    VEX2_VECTOR const local = vertex.influences[0].local_position;
    vertex.bind_position = {50, 50, 50};
    vertex.frames.append(VEX2_TANGENT_FRAME{{0, 0, 1}, {0, 1, 0}});
    EXPECT_FALSE(vertex.has_local_frames());
    scene->refresh_weighted_frames();
    EXPECT_TRUE(vertex.has_local_frames());
    expect_near(vertex.influences[0].local_position, local);
    expect_near(placed(scene->hierarchy.nodes[1].matrix, {0, 0, 0}), {1, 3, 3});  // left at the start pose
    scene->seek(0);
    expect_near(vertex.frames[1].binormal, {0, 0, 1});
}

TEST(Skinning, VerticesWithoutInfluenceOrFittingFramesStay)
{
    auto scene = make_full_scene();
    weighted_vertex(*scene, 0).influences.clear();
    weighted_vertex(*scene, 0).bind_position = {7, 8, 9};
    weighted_vertex(*scene, 1).frames.append(VEX2_TANGENT_FRAME{{0, 0, 3}, {0, 3, 0}});
    weighted_vertex(*scene, 2).influences[0].matrix_index = 1000;
    scene->seek(1);
    expect_near(weighted_vertex(*scene, 0).position, {7, 8, 9});
    expect_near(weighted_vertex(*scene, 1).frames[1].binormal, {0, 0, 3});
}

// A vertex that was copied out outlives its mesh.
TEST(Vertices, CopiesOwnTheirArrays)
{
    VEX2_WEIGHTED_VERTEX weighted;
    VEX2_ANIMATED_VERTEX animated;
    {
        VEX2 scene;
        ASSERT_TRUE(load_bytes(scene, file_of(*make_full_scene())));
        weighted = scene.weighted_meshes[0]->vertices[1];
        animated = scene.animated_meshes[0]->vertices[1];
        scene.seek(5);
    }
    EXPECT_EQ(weighted.uvws[0].x, 1);
    EXPECT_EQ(weighted.influences[1].weight, 0.75f);
    EXPECT_EQ(weighted.local_frames.count, 2u);
    VEX2_VECTOR position;
    animated.get_position(position);
    expect_near(position, {1, 0, 0});  // its channel did not move with the scene's
    VEX2_VECTOR normal{4, 5, 6};
    animated.get_normal(normal);
    expect_near(normal, {4, 5, 6});  // there is no such channel
}

TEST(Morphing, OffsetsAreTheWeightedDeltas)
{
    auto scene = make_full_scene();
    scene->seek(2.5f);  // the weights are 0.25 and 0.75
    VEX2_VECTOR position;
    scene->morph_meshes[0]->vertices[2].get_position(position);
    expect_near(position, {0.75f, 1, 0.5f});
    scene->advance(2.5f);
    scene->morph_meshes[0]->vertices[2].get_position(position);
    expect_near(position, {0.5f, 1, 1});
}

TEST(Splines, BezierPositionsAndTangents)
{
    VEX2_SPLINE const spline =
        make_full_scene()->shapes[0]->splines[0];  // a line (0,0) (1,0), then a parabola (1,0) (1,2) (3,2)
    const struct {
        float t;
        VEX2_VECTOR position, tangent;
    } cases[] = {
        {0, {0, 0, 0}, {1, 0, 0}},
        {0.25f, {0.5f, 0, 0}, {0.5f, 0, 0}},  // the weights of the tangent are those of the position
        {0.75f, {1.5f, 1.5f, 0}, {1, 0.5f, 0}},
        {1, {3, 2, 0}, {0, 0, 0}},
        {-0.5f, {-1, 0, 0}, {2, 0, 0}},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.t);
        VEX2_VECTOR position, tangent;
        spline.position_at(c.t, position);
        spline.tangent_at(c.t, tangent);
        expect_near(position, c.position);
        expect_near(tangent, c.tangent);
    }
    EXPECT_EQ(spline.length(), 5);
    // What does not hold together leaves the result as it was.
    for (auto const &damage : {+[](VEX2_SPLINE &s) { s.points.resize(3); }, +[](VEX2_SPLINE &s) { s.segments.clear(); },
                               +[](VEX2_SPLINE &s) { s.segments[1].degree = 4; },
                               +[](VEX2_SPLINE &s) { s.segments[1].degree = 0xffffffff; }}) {
        VEX2_SPLINE damaged = spline;
        damage(damaged);
        VEX2_VECTOR position{7, 7, 7};
        damaged.position_at(1, position);
        expect_near(position, {7, 7, 7});
    }
}

TEST(Splines, AnimatedPointsAreTakenAtTheCurrentTime)
{
    auto scene = make_full_scene();
    scene->seek(5);
    VEX2_VECTOR position;
    scene->shapes[0]->animated_splines[0].position_at(1, position);
    expect_near(position, {3, 2, 5});
}

TEST(Seek, ReachesWhatMovesAndNothingElse)
{
    auto scene = make_full_scene();
    scene->seek(5);
    auto const at_half = [](VEX2_CHANNEL const *channel) { return channel->fraction == 0.5f; };
    EXPECT_TRUE(at_half(scene->tint->level));
    EXPECT_TRUE(at_half(scene->int_track.value));
    EXPECT_TRUE(at_half(scene->ambient->colour));
    EXPECT_TRUE(at_half(scene->lights[2]->shadow.look.value));
    EXPECT_TRUE(at_half(static_cast<VEX2_BITMAP_MAP *>(scene->lights[2]->projector.get())->uv.offset));
    EXPECT_TRUE(at_half(scene->cameras[0]->first_value));
    EXPECT_TRUE(at_half(static_cast<VEX2_DEPTH_EFFECT *>(scene->cameras[0]->effects[2].get())->value_7));
    EXPECT_TRUE(at_half(scene->animated_meshes[0]->vertices[1].position));
    EXPECT_TRUE(at_half(static_cast<VEX2_SHADER_MATERIAL *>(scene->materials[1])->floats[0].value));
    VEX2_MAP *const blended = static_cast<VEX2_STANDARD_MATERIAL *>(scene->materials[0])->maps[0];
    EXPECT_TRUE(at_half(static_cast<VEX2_BLEND_MAP *>(blended)->first->amount));
    EXPECT_TRUE(at_half(scene->static_meshes[0]->extent));
    EXPECT_TRUE(at_half(scene->name_links[0]->extent));
    for (std::uint32_t id = 0; id < VEX2::attachment_list_count; ++id)
        EXPECT_EQ(at_half((*scene->attachment_list(id))[0]->extent), id != 2) << id;
    EXPECT_FALSE(at_half(scene->helpers[0]->extent));
    EXPECT_FALSE(at_half(scene->links[0]->extent));
    EXPECT_FALSE(at_half(scene->hierarchy.nodes[1].attributes.floats[0].value));
}

TEST(Attributes, ClassTypeIsTheFirstWithExactlyOneValue)
{
    VEX2_ATTRIBUTES attributes;
    EXPECT_EQ(attributes.class_type(), nullptr);
    attributes.strings.append().name = u"class_TYPE";
    attributes.add_string(u"class_TYPE", u"DISPLAY");
    attributes.strings[1].values.append(u"TECH");
    attributes.add_string(u"class_type", u"lower");
    attributes.add_string(u"class_TYPE", u"TECH");
    attributes.add_string(u"class_TYPE", u"DISPLAY");
    ASSERT_TRUE(attributes.class_type());
    EXPECT_EQ(*attributes.class_type(), u"TECH");
}

TEST(Equality, ACloneIsEqualUntilAFieldChanges)
{
    auto scene = make_full_scene();
    for (VEX2_MATERIAL const *material : scene->materials) {
        VEX2_OWNED<VEX2_MATERIAL> const copy(material->clone());
        EXPECT_TRUE(material->equals(*copy));
        copy->attributes.add_string(u"a", u"b");
        EXPECT_FALSE(material->equals(*copy));
    }
    for (VEX2_LIGHT const *one : scene->lights) {
        VEX2_OWNED<VEX2_LIGHT> const copy(one->clone());
        EXPECT_TRUE(one->equals(*copy));
        copy->shadow.filter.third_number = nullptr;
        EXPECT_FALSE(one->equals(*copy));
    }
    EXPECT_FALSE(scene->lights[0]->equals(*scene->lights[2])) << "spot and direct";
    for (VEX2_ATTACHMENT const *one : scene->attachments_5) {
        VEX2_OWNED<VEX2_ATTACHMENT> const copy(one->clone());
        EXPECT_TRUE(one->equals(*copy));
        copy->index += 1;
        EXPECT_FALSE(one->equals(*copy));
    }
    EXPECT_FALSE(scene->attachments_5[0]->equals(*scene->attachments_5[1]));
}

TEST(CheckScene, FindsNothingInAGoodSceneAndEachFaultInABadOne)
{
    VEX2_FINDINGS const good = check_scene(*make_full_scene());
    EXPECT_TRUE(good.errors.empty()) << good.errors[0];
    // The shader material's vector4 attribute has no channel, the scene's third light no node: neither is a fault.
    EXPECT_TRUE(good.warnings.empty()) << good.warnings[0];

    auto scene = make_full_scene();
    scene->static_meshes[0]->sections[0].triangles[0].vertices[1] = 3;
    scene->static_meshes[0]->sections[0].material_index = 2;
    weighted_vertex(*scene, 1).influences[0].weight = 3;
    scene->hierarchy.nodes[0].parent_index = 1;
    scene->shapes[0]->splines[0].points.resize(2);
    scene->tint->level->times[1] = 0;
    scene->lights[0]->matrix_index = 9;
    VEX2_FINDINGS const bad = check_scene(*scene);
    EXPECT_EQ(bad.errors,
              (KN_STD::VECTOR<KN::String>{"static_meshes[0].sections[0]: a triangle's vertex is number 3, there are 3",
                                          "shapes[0]: a spline whose segments stand on 4 points has 2"}));
    EXPECT_EQ(bad.warnings, (KN_STD::VECTOR<KN::String>{
                                "hierarchy.nodes[0]: the parent, 1, stands behind it: world matrices lag behind",
                                "static_meshes[0].sections[0]: the material is number 2, there are 2",
                                "weighted_meshes[0].vertices[1]: the weights sum to 3.750000, not to 1",
                                "lights[0]: its node is number 9, there are 2",
                                "tint.level: key time 1 is 0.000000, times must be finite and ascend"}));
}

}  // namespace
