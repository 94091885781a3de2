// The example tree through the programs as people use them: what is built, and what a change makes stale. The tree is
// made and built once; each test leaves it up to date.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>

#include <sys/wait.h>

namespace fs = std::filesystem;

namespace {

using NAMES = std::set<std::string>;

struct BUILD {
    int exit_code = -1;
    int done = -1;            // actions that ran and succeeded
    NAMES scenes;             // the file names of the scenes whose actions ran
    std::string other_lines;  // what is no event: errors and warnings
};

int run(std::string const &command, std::string &output)
{
    std::FILE *const pipe = ::popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr)
        return -1;
    char buffer[4096];
    while (std::size_t const size = std::fread(buffer, 1, sizeof buffer, pipe))
        output.append(buffer, size);
    int const status = ::pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string read_file(fs::path const &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_file(fs::path const &path, std::string const &bytes) { std::ofstream(path, std::ios::binary) << bytes; }

class ExampleTree : public testing::Test {
public:
    static void SetUpTestSuite()
    {
        std::string name = (fs::temp_directory_path() / "example_tree_XXXXXX").string();
        folder = ::mkdtemp(name.data());
        std::string output;
        ASSERT_EQ(run(MAKE_EXAMPLES " '" + folder.string() + "'", output), 0) << output;
        first = build();
    }
    static void TearDownTestSuite() { fs::remove_all(folder); }

    static BUILD build()
    {
        BUILD result;
        std::string output;
        result.exit_code = run(MOX " -C '" + folder.string() + "' build --json", output);
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            auto const event = nlohmann::json::parse(line, nullptr, false);
            if (!event.is_object())
                result.other_lines += line + '\n';
            else if (event["event"] == "summary")
                result.done = event["done"];
            else if (event["event"] == "start")
                add_scene(event["name"], result.scenes);
        }
        return result;
    }

    static fs::path folder;
    static BUILD first;

private:
    // The scene in a name such as "Convert vex2 (props/barrel.vx2)".
    static void add_scene(std::string const &name, NAMES &scenes)
    {
        std::size_t const end = name.rfind(".vx2)");
        if (end == std::string::npos)
            return;
        std::size_t const start = name.find_last_of("(/", end) + 1;
        scenes.insert(name.substr(start, end - start));
    }
};
fs::path ExampleTree::folder;
BUILD ExampleTree::first;

NAMES const all_scenes = {"barrel", "hills", "horse", "hut", "meeting", "oak", "soldier", "tower", "villager", "yard"};

NAMES scenes_with_models()
{
    NAMES names = all_scenes;
    names.erase("meeting");
    return names;
}

}  // namespace

TEST_F(ExampleTree, BuildsWhatTheRulesPromise)
{
    EXPECT_EQ(first.exit_code, 0);
    EXPECT_EQ(first.other_lines, "");
    EXPECT_EQ(first.scenes, all_scenes);
    for (char const *product : {
             "models/buildings/hut.rigid_model_v2",
             "models/buildings/hut_tech.vx2.parsed",
             "models/buildings/yard.rigid_model_v2",
             "models/buildings/yard_tech.vx2.parsed",
             "models/castle/tower.rigid_model_v2",
             "models/people/horse.rigid_model_v2",
             "models/people/soldier.rigid_model_v2",
             "models/people/villager.rigid_model_v2",
             "models/props/barrel.rigid_model_v2",
             "models/trees/oak.rigid_model_v2",
             "terrain/tiles/hills/hills.rigid_model_v2",
         }) {
        std::string const bytes = read_file(folder / "working_data" / product);
        EXPECT_EQ(bytes.substr(0, 4), "glTF") << product;
    }
    for (char const *product : {
             "animations/horse/horse.anim",
             "animations/meetings/meeting/animation2.anim",
             "animations/meetings/meeting/tool_spec.xml",
             "models/buildings/hut_tech.agf",
             "models/people/poses/soldier.bone_inv_trans_mats",
             "models/props/barrel.klmodel.agf",
             "models/trees/oak.rigid_model_v2.agf",
             "textures/trees/oak_billboard_autumn_diffuse.dds",
             "textures/trees/oak_billboard_normal.dds",
             "textures/trees/oak_billboard.billboard.xml",
             "models/buildings/hut.rigid_model_v2.model_statistics",
             "terrain/tiles/hills/hf_height_map.data",
             "terrain/tiles/hills/hf_height_map_mesh_delta.data",
             "terrain/tiles/hills/terrain_outlines.xml",
         })
        EXPECT_TRUE(fs::exists(folder / "working_data" / product)) << product;
}

TEST_F(ExampleTree, MadeAgainItHasTheSameBytes)
{
    fs::path const again = folder / "again";
    std::string output;
    ASSERT_EQ(run(MAKE_EXAMPLES " '" + again.string() + "'", output), 0) << output;
    int compared = 0;
    for (fs::directory_entry const &entry : fs::recursive_directory_iterator(again))
        if (entry.is_regular_file()) {
            ++compared;
            fs::path const inside = fs::relative(entry.path(), again);
            EXPECT_TRUE(read_file(entry.path()) == read_file(folder / inside)) << inside;
        }
    EXPECT_GT(compared, 20);
    fs::remove_all(again);
}

TEST_F(ExampleTree, ChangeRebuildsWhatReadTheFileAndNothingElse)
{
    // A chunk of a type that readers skip: other bytes, the same scene.
    std::string const skipped_chunk("\x08\0\0\0\x18\0\0\0", 8);
    auto const append = [](std::string const &added) { return [added](std::string &bytes) { bytes += added; }; };
    auto const replace = [](std::string const &from, std::string const &to) {
        return [from, to](std::string &bytes) {
            std::size_t const at = bytes.find(from);
            ASSERT_NE(at, std::string::npos) << from;
            bytes.replace(at, from.size(), to);
        };
    };
    struct {
        char const *what;
        char const *file;
        std::function<void(std::string &)> change;
        NAMES rebuilt;
    } const cases[] = {
        {"nothing", "mox.toml", append(""), {}},
        {"a comment in the rules", "mox.toml", append("# all is well\n"), {}},
        {"a scene that another refers to", "raw_data/buildings/hut.vx2", append(skipped_chunk), {"hut", "yard"}},
        {"a scene that refers to another", "raw_data/buildings/yard.vx2", append(skipped_chunk), {"yard"}},
        {"a scene that stands alone", "raw_data/props/barrel.vx2", append(skipped_chunk), {"barrel"}},
        {"a picture", "raw_data/castle/cloth.tga", append("x"), {"tower"}},
        {"a rule of one folder",
         "raw_data/castle/rules.toml",
         replace("RigidCategory = \"castle\"", "RigidCategory = \"ruin\""),
         {"tower"}},
        {"a property that no plan reads", "raw_data/castle/rules.toml", append("LodType = \"far\"\n"), {}},
        {"levels of detail for the whole tree", "mox.toml", replace("LODQuality2 = 20", "LODQuality2 = 25"),
         scenes_with_models()},
        {"a global rule", "mox.toml", replace("Enabled = false", "Enabled = true"), all_scenes},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.what);
        std::string bytes = read_file(folder / c.file);
        c.change(bytes);
        write_file(folder / c.file, bytes);
        BUILD const second = build();
        EXPECT_EQ(second.exit_code, 0);
        EXPECT_EQ(second.scenes, c.rebuilt);
        EXPECT_EQ(second.done == 0, c.rebuilt.empty()) << second.done << " actions ran";
        EXPECT_EQ(build().done, 0) << "a further build";
    }
}
