// One model from file to file, the start of the process included: `vx2 clean` loads a scene of 400,000 triangles that
// share no vertex, merges the duplicates, builds frames and writes it. Read it beside `assimp export`, which is told to
// do the same to the same mesh as binary glTF, and beside FileCopy, the scene's bytes read and written.
#include "benchmarks/scene/grid_scene.h"

#include <benchmark/benchmark.h>

#include <cstdlib>

namespace {

using namespace GRID_SCENE;
namespace fs = std::filesystem;

// The files of the benchmark: the scene, and the same as glTF.
class FILES {
public:
    FILES()
    {
        fs::create_directories(folder);
        VEX2 scene;
        scene.hierarchy.add_node(u"root", -1, {0, 0, 0});
        VEX2_STATIC_MESH *const mesh = scene.static_meshes.append(new VEX2_STATIC_MESH);
        mesh->name = u"grid";
        mesh->vertices.reserve(triangle_count * 3);
        VEX2_POLYGON_SET &section = mesh->sections.append(VEX2_POLYGON_SET());
        GRID_SHAPE::for_each_triangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            for (std::uint32_t const corner : {a, b, c})
                mesh->vertices.append(vertex_at(corner % side, corner / side)).frames.clear();
            std::uint32_t const end = mesh->vertices.count;
            section.triangles.append(VEX2_TRIANGLE{{end - 3, end - 2, end - 1}});
        });
        VEX2_CHUNK_WRITER writer(KN::from_utf8(this->scene().string()), false, true);
        good = scene.write(writer) && writer.close() &&
               run(VX2_PROGRAM " export " + this->scene().string() + " " + gltf().string());
    }
    ~FILES() { fs::remove_all(folder); }

    static bool run(std::string const &command) { return std::system((command + " >/dev/null 2>&1").c_str()) == 0; }

    fs::path scene() const { return folder / "grid.vx2"; }
    fs::path gltf() const { return folder / "grid.glb"; }
    fs::path result(char const *name) const { return folder / name; }

    bool good = false;

private:
    fs::path folder = fs::temp_directory_path() / "mox_apps_benchmark";
};

FILES const &files()
{
    static FILES const made;
    return made;
}

void measure(benchmark::State &state, std::string const &command, fs::path const &result)
{
    if (!files().good)
        state.SkipWithError("the files could not be made");
    for (auto _ : state) {
        if (!FILES::run(command))
            state.SkipWithError("the program failed");
        state.PauseTiming();
        if (!fs::exists(result) || fs::file_size(result) < 10'000'000)
            state.SkipWithError("nothing came out");
        fs::remove(result);
        state.ResumeTiming();
    }
}

void FileCopy(benchmark::State &state)
{
    fs::path const result = files().result("copy.vx2");
    measure(state, "cp " + files().scene().string() + " " + result.string(), result);
}
BENCHMARK(FileCopy)->Unit(benchmark::kMillisecond)->UseRealTime();

void SceneClean(benchmark::State &state)
{
    fs::path const result = files().result("clean.vx2");
    measure(state, VX2_PROGRAM " clean " + files().scene().string() + " " + result.string(), result);
}
BENCHMARK(SceneClean)->Unit(benchmark::kMillisecond)->UseRealTime();

void AssimpExport(benchmark::State &state)
{
    fs::path const result = files().result("clean.glb");
    measure(state, "assimp export " + files().gltf().string() + " " + result.string() + " -jiv -cts", result);
}
BENCHMARK(AssimpExport)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
