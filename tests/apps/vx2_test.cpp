#include "foundation/containers.h"
#include "platform/exchange/limited_process.h"
#include "platform/exchange/scene_file.h"
#include "scene/scene.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sstream>

using namespace VEX2_LOADER;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

struct RAN {
    int code;
    std::string out, err;
};

class Vx2 : public testing::Test {
protected:
    void SetUp() override
    {
        std::string name = (std::filesystem::temp_directory_path() / "vx2-test-XXXXXX").string();
        folder = ::mkdtemp(name.data());
        KN::String error;
        VEX2 scene;
        scene.hierarchy.add_node(u"root", -1, {1, 2, 3});
        VEX2_STATIC_MESH *const mesh = new VEX2_STATIC_MESH;
        for (float const x : {0.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f}) {
            VEX2_VERTEX &vertex = mesh->vertices.append();
            vertex.position = {x, float(mesh->vertices.count % 3), 0};
            vertex.normal = {0, 0, 1};
        }
        VEX2_POLYGON_SET &section = mesh->sections.append();
        for (std::uint32_t const first : {0u, 3u})
            section.triangles.append().vertices[0] = first;
        for (VEX2_TRIANGLE &triangle : section.triangles)
            for (std::uint32_t i = 1; i < 3; ++i)
                triangle.vertices[i] = triangle.vertices[0] + i;
        scene.static_meshes.append(mesh);
        ASSERT_TRUE(write_scene(path("a.vx2"), scene, error)) << error;
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    std::string path(std::string const &name) const { return folder + "/" + name; }

    std::string read(std::string const &file) const
    {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }

    // `arguments` as on a command line, in the test's folder.
    RAN run(std::string const &arguments)
    {
        PROCESS_RESULT const ran =
            run_limited({"/bin/sh", "-c", "cd " + folder + " && " VX2_PROGRAM " " + arguments + " 2>err"}, {});
        return {ran.ending == PROCESS_RESULT::ENDED ? ran.code : -1, ran.output, read(path("err"))};
    }

    std::string folder;
};

}  // namespace

TEST_F(Vx2, ExitCodesTellDoneFailedAndWrongUsage)
{
    struct {
        char const *arguments;
        int code;
    } const cases[] = {
        {"info a.vx2", 0},
        {"validate a.vx2", 0},
        {"dump a.vx2 --time -0.5 --prepare", 0},
        {"export a.vx2 a.glb", 0},
        {"bones a.vx2 a.bone_table", 0},
        {"info gone.vx2", 1},
        {"anim gone.anim", 1},
        {"anim a.vx2", 1},
        {"import gone.obj b.vx2", 1},
        {"upgrade a.vx2 no/such/folder/b.vx2", 1},
        {"", 2},
        {"dump", 2},
        {"dump a.vx2 --time soon", 2},
        {"dump a.vx2 --time nan", 2},
        {"frobnicate a.vx2", 2},
        {"import a.obj b.vx2 --clip x --all-clips", 2},
    };
    for (auto const &c : cases) {
        RAN const ran = run(c.arguments);
        EXPECT_EQ(ran.code, c.code) << c.arguments << "\n" << ran.err;
        EXPECT_EQ(ran.err.empty(), c.code == 0) << c.arguments << "\n" << ran.err;
    }
}

TEST_F(Vx2, DumpOfABadFileIsOneLineOnStandardErrorAndNothingElse)
{
    std::string const whole = read(path("a.vx2"));
    struct {
        char const *file;
        std::string bytes;
    } const cases[] = {
        {"empty.vx2", ""},
        {"text.vx2", "no scene"},
        {"cut.vx2", whole.substr(0, whole.size() - 7)},
        {"new\nline.vx2", "no scene"},
    };
    for (auto const &c : cases) {
        std::ofstream(path(c.file), std::ios::binary) << c.bytes;
        RAN const ran = run("dump '" + std::string(c.file) + "'");
        EXPECT_EQ(ran.code, 1) << c.file;
        EXPECT_EQ(ran.out, "") << c.file;
        EXPECT_EQ(std::count(ran.err.begin(), ran.err.end(), '\n'), 1) << ran.err;
        EXPECT_THAT(ran.err, HasSubstr("vx2: "));
    }
    RAN const folder_ran = run("dump .");
    EXPECT_EQ(folder_ran.code, 1);
    EXPECT_THAT(folder_ran.err, StartsWith(".: this is a folder"));
}

// One bone with one rotation, half as long as it should be.
TEST_F(Vx2, AnimPrintsBonesAndFaultyRotations)
{
    using namespace std::string_literals;
    std::ofstream(path("a.anim"), std::ios::binary)
        << "\5\0\0\0\0\0\0\0\0\0\xa0\x41\4\0walk\0\0\0\0"s  // version 5, 20 frames a second
        << "\1\0\0\0\4\0Hips\xff\xff\xff\xff"s              // a bone without parent
        << "\xff\xff\xff\xff\0\0\0\0"s                      // of which the rotation is animated
        << "\0\0\0\0\1\0\0\0\1\0\0\0\0\0\0\0\0\0\0\x40"s;   // one frame
    RAN const ran = run("anim a.anim");
    EXPECT_EQ(ran.code, 0) << ran.err;
    for (char const *line :
         {"walk", "20 frames a second", "0 hips", "parent   -1, rotation\n", "faulty", "export : 0 ; "})
        EXPECT_THAT(ran.out, HasSubstr(line));
}

TEST_F(Vx2, DumpTakesTimeAndPreparation)
{
    EXPECT_THAT(run("dump a.vx2").out, HasSubstr("\"triangles\":[[0,1,2],[3,4,5]]"));
    std::string const prepared = run("dump a.vx2 --prepare").out;
    EXPECT_THAT(prepared, testing::Not(HasSubstr("[3,4,5]")));  // the second triangle repeats the first
}

TEST_F(Vx2, ResultsMayTakeTheirSourcesPlace)
{
    std::string const before = read(path("a.vx2"));
    EXPECT_EQ(run("upgrade a.vx2 a.vx2").code, 0);
    EXPECT_EQ(read(path("a.vx2")), before);
    EXPECT_EQ(run("clean a.vx2 a.vx2").code, 0);
    EXPECT_LT(read(path("a.vx2")).size(), before.size());
    EXPECT_EQ(run("validate a.vx2").code, 0);
}

TEST_F(Vx2, ValidateFailsOnATriangleWithoutVertices)
{
    VEX2 scene;
    KN::String error;
    VEX2_STATIC_MESH *const mesh = new VEX2_STATIC_MESH;
    mesh->sections.append().triangles.append();
    scene.static_meshes.append(mesh);
    ASSERT_TRUE(write_scene(path("b.vx2"), scene, error)) << error;
    RAN const ran = run("validate b.vx2");
    EXPECT_EQ(ran.code, 1);
    EXPECT_THAT(ran.out + ran.err, HasSubstr("b.vx2: "));
}
