// Loading and writing 400,000 triangles from and to memory that is new each time. Read SceneLoad beside MemoryCopy (the
// file's bytes into fresh memory) and beside GltfLoad, here and in gltf_benchmark.
#include "benchmarks/scene/fresh_memory.h"
#include "benchmarks/scene/grid_scene.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

using namespace GRID_SCENE;

std::string const &scene_file()
{
    static std::string const file = file_of(*make_scene());
    return file;
}

void MemoryCopy(benchmark::State &state)
{
    std::string const &file = scene_file();
    for (auto _ : state) {
        char *const copy = static_cast<char *>(std::malloc(file.size()));
        std::memcpy(copy, file.data(), file.size());
        benchmark::DoNotOptimize(copy);
        state.PauseTiming();
        std::free(copy);
        give_memory_back();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * file.size()));
}
BENCHMARK(MemoryCopy)->Unit(benchmark::kMillisecond);

void SceneLoad(benchmark::State &state)
{
    std::string const &file = scene_file();
    for (auto _ : state) {
        auto scene = std::make_unique<VEX2>();
        VEX2_READ_BUFFER buffer(u"grid.vx2", file.data(), unsigned(file.size()));
        if (!scene->load(buffer, true))
            state.SkipWithError("does not load");
        state.PauseTiming();
        if (scene->static_meshes[0]->triangle_count() != triangle_count ||
            scene->static_meshes[0]->vertices.back().uvws[0].x != 1)
            state.SkipWithError("wrong scene");
        scene.reset();
        give_memory_back();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * file.size()));
}
BENCHMARK(SceneLoad)->Unit(benchmark::kMillisecond);

void SceneWrite(benchmark::State &state)
{
    auto const scene = make_scene();
    for (auto _ : state)
        if (!write_scene(*scene))
            state.SkipWithError("was not written");
    std::size_t const size = std::filesystem::file_size(scratch_file());
    std::filesystem::remove(scratch_file());
    if (size != scene_file().size())
        state.SkipWithError("wrong file");
    state.SetBytesProcessed(std::int64_t(state.iterations() * size));
}
BENCHMARK(SceneWrite)->Unit(benchmark::kMillisecond);

// The write's floor: the same bytes handed to the system in one call.
void FileWrite(benchmark::State &state)
{
    std::string const &file = scene_file();
    for (auto _ : state) {
        KN::FileOut out;
        out.open(KN::String(scratch_file().string()), false, true);
        if (out.write(file.data(), unsigned(file.size())) != file.size() || !out.close())
            state.SkipWithError("was not written");
    }
    std::filesystem::remove(scratch_file());
    state.SetBytesProcessed(std::int64_t(state.iterations() * file.size()));
}
BENCHMARK(FileWrite)->Unit(benchmark::kMillisecond);

}  // namespace
