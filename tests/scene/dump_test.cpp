#include "scene/dump.h"
#include "tests/scene/make_scene.h"

#include <gmock/gmock.h>

#include <cmath>

namespace {

using namespace TEST_SCENE;
using testing::HasSubstr;

TEST(SceneDump, TheDocumentedExample)
{
    VEX2 scene;
    scene.info.end_time = 10;
    scene.tint = new VEX2_GLOBAL_TINT;
    scene.tint->level = new VEX2_FLOAT_CHANNEL;
    append_key(*scene.tint->level, -1, 0.1f);
    append_key(*scene.tint->level, 1, 1.0f);
    scene.hierarchy.add_node(u"root", -1, {1, 2, 3});
    scene.hierarchy.nodes[0].attributes.add_string(u"class_TYPE", u"DISPLAY");
    scene.seek(0);
    EXPECT_EQ(
        dump_scene(scene),
        R"({"header":{"version":1.15999997,"producer":"NATIVE WIN32","source_text":""},)"
        R"("info":{"start_time":0,"end_time":10,"background":null,"background_map":null,"stamp":"0000000000000000"},)"
        R"("ambient":null,)"
        R"("tint":{"level":{"subtype":0,"key":0,"fraction":0.5,"times":[-1,1],"values":[0.100000001,1]},"colour":null},)"
        R"("lights":[],"cameras":[],"static_meshes":[],"animated_meshes":[],"morph_meshes":[],"weighted_meshes":[],)"
        R"("shapes":[],"helpers":[],"name_links":[],"hierarchy":{"nodes":[{"name":"root","parent_index":-1,)"
        R"("translation":{"subtype":3,"key":0,"fraction":0,"times":[0],"values":[[1,2,3]]},)"
        R"("rotation":{"subtype":6,"key":0,"fraction":0,"times":[0],"values":[[0,0,0,1]]},)"
        R"("scale":null,"matrix":[1,0,0,1,0,1,0,2,0,0,1,3],"node_text":"",)"
        R"("attributes":{"strings":[{"name":"class_TYPE","values":["DISPLAY"]}],)"
        R"("ints":[],"floats":[],"vectors":[],"vector4s":[]}}]},"materials":[],)"
        R"("attachments_3":[],"attachments_2":[],"attachments_5":[],"attachments_0":[],"attachments_4":[],)"
        R"("attachments_6":[],"attachments_1":[],"attachments_7":[],"attachments_8":[],"attachments_9":[],)"
        R"("references_a":[],"references_b":[],"links":[],"int_track":{"value":null}})"
        "\n");
}

TEST(SceneDump, RecordsHaveTheirOwnForms)
{
    auto scene = make_full_scene();
    scene->seek(0);
    KN::String const dump = dump_scene(*scene);
    char const *const pieces[] = {
        R"("stamp":"a0a1a2a3a4a5a6a7")",
        // Of a light: the embedded records without names of their own.
        R"("bias":[{"subtype":8,"key":0,"fraction":0,"times":[0],"values":[3]},null,null])",
        R"("effects":[{"subtype":0,"channels":[null,{"subtype":0,"key":0,)",
        R"(]},null,{"subtype":1,"channels":[{"subtype":8,)",
        R"("sections":[{"triangles":[[0,1,2]],"material_index":0}],"colour_flag":1)",
        // A frame is a record on a vertex and six numbers in a channel.
        R"("frames":[{"binormal":[0,1,0],"tangent":[1,0,0]}]})",
        R"({"subtype":10,"key":0,"fraction":0,"times":[0],"values":[[0,1,0,1,0,0]]})",
        R"("influences":[{"matrix_index":0,"weight":1,"local_position":[-1,-2,-3],"local_normal":[0,0,1],)"
        R"("frames":[{"binormal":[0,1,0],"tangent":[1,0,0]}]}],"bind_position":[0,0,0],"bind_normal":[0,0,1]})",
        R"("deltas":[{"offset":[0,0,2],"target":0},{"offset":[1,0,0],"target":1}],"morph_offset":[1,0,0])",
        R"("splines":[{"points":[[0,0,0],[1,0,0],[1,2,0],[3,2,0]],"segments":[{"degree":1,"length":1},)",
        R"("textures":[{"slot":"diffuse","file":"wood.tga"}],"slots":[{"name":"slot","numbers":[3,4]}])",
        R"("crop":{"enabled":true,"mode":4294967295,)",
        R"("filter":{"values":[0,1],"number":0}})",
        R"("flags":[false,true,false],"blend_mode":4294967295})",
        R"("attachments_8":[{"subtype":0,"name":"attachment")",
        R"({"subtype":2,"name":"attachment")",
        R"("index":2,"indices":[11],"second_indices":[12]})",
        R"("references_a":[{"path":"missing_a.vx2","scene":null}])",
        R"("number":2147483647,"second_text_of_link":"second of link")",
    };
    for (char const *piece : pieces)
        EXPECT_THAT(dump, HasSubstr(piece));
}

TEST(SceneDump, NumbersAndTextsThatNeedCare)
{
    VEX2 scene;
    scene.header.producer = u"q\" b\\ t\t \u00e9 \U0001F600 ";
    scene.header.producer += char16_t(0xdc00);
    scene.header.producer += char16_t(0xd83d);
    scene.tint = new VEX2_GLOBAL_TINT;
    scene.tint->level = new VEX2_FLOAT_CHANNEL;
    for (float const value : {NAN, -NAN, INFINITY, -INFINITY, 1e-45f, 16777217.0f, 1e30f, -0.5f})
        append_key(*scene.tint->level, 0, value);
    KN::String const dump = dump_scene(scene);
    EXPECT_THAT(dump, HasSubstr("\"q\\\" b\\\\ t\\u0009 \xc3\xa9 \xf0\x9f\x98\x80 \\udc00\\ud83d\""));
    EXPECT_THAT(dump, HasSubstr("[\"nan\",\"nan\",\"inf\",\"-inf\",1.40129846e-45,16777216,1.00000002e+30,-0.5]"));
}

TEST(SceneDump, ASinkThatStopsStopsTheDump)
{
    struct FULL_DISK final : VEX2_DUMP_SINK {
        unsigned calls = 0;
        bool write(std::string_view) override { return ++calls < 2; }
    } sink;
    VEX2 scene;
    scene.static_meshes.append(new VEX2_STATIC_MESH)->first_indices.resize(200000);
    EXPECT_FALSE(dump_scene(scene, sink));
    EXPECT_EQ(sink.calls, 2u);
}

}  // namespace
