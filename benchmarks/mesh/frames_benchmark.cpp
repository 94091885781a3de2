// The frame pass, removal of degenerate triangles and unused vertices included, beside the tangent step of the importer
// library on the same corners in the same run; that step wants corners that are not shared. Ours runs on those as well,
// and as a build runs it, after duplicates have been merged.

#include "benchmarks/mesh/grid.h"
#include "mesh/prepare.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <benchmark/benchmark.h>
#include <cmath>
#include <string>

using namespace VEX2_LOADER;

namespace {

// The corners as a binary glTF file.
std::string glb_of(std::vector<GRID_CORNER> const &corners)
{
    std::string const count = std::to_string(corners.size());
    std::string const bytes = std::to_string(corners.size() * sizeof(GRID_CORNER));
    auto const accessor = [&count](unsigned offset, char const *type) {
        return R"({"bufferView":0,"componentType":5126,"count":)" + count + R"(,"byteOffset":)" +
               std::to_string(offset) + R"(,"type":")" + type + R"("})";
    };
    std::string json = R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],)"
                       R"("meshes":[{"primitives":[{"attributes":{"POSITION":0,"NORMAL":1,"TEXCOORD_0":2}}]}],)"
                       R"("buffers":[{"byteLength":)" +
                       bytes + R"(}],"bufferViews":[{"buffer":0,"byteLength":)" + bytes +
                       R"(,"byteStride":52}],"accessors":[)" + accessor(0, "VEC3") + "," + accessor(12, "VEC3") + "," +
                       accessor(40, "VEC2") + "]}";
    json.resize((json.size() + 3) / 4 * 4, ' ');
    auto const u32 = [](std::size_t value) {
        unsigned const number = unsigned(value);
        return std::string(reinterpret_cast<char const *>(&number), 4);
    };
    std::string const binary(reinterpret_cast<char const *>(corners.data()), corners.size() * sizeof(GRID_CORNER));
    return "glTF" + u32(2) + u32(28 + json.size() + binary.size()) + u32(json.size()) + "JSON" + json +
           u32(binary.size()) + std::string("BIN\0", 4) + binary;
}

double frames_theirs(std::string const &glb, benchmark::State &state)
{
    Assimp::Importer importer;
    aiScene const *const scene = importer.ReadFileFromMemory(glb.data(), glb.size(), 0, "glb");
    if (scene == nullptr || scene->mNumMeshes != 1) {
        state.SkipWithError("their import failed");
        return 0;
    }
    double const seconds = seconds_of([&] { importer.ApplyPostProcessing(aiProcess_CalcTangentSpace); });
    if (scene->mMeshes[0]->mTangents == nullptr)
        state.SkipWithError("they made no tangents");
    return seconds;
}

double frames_ours(VEX2 &scene, benchmark::State &state)
{
    double const seconds = seconds_of([&] { generate_frames(scene, prepare_frame_options); });
    // Where x and u grow together and z and v do, the tangent leans towards x and the binormal towards z.
    for (VEX2_VERTEX const &vertex : scene.static_meshes[0]->vertices)
        if (vertex.frames.count != 1 || !(vertex.frames[0].tangent.x > 0.1f) || !(vertex.frames[0].binormal.z > 0.1f)) {
            state.SkipWithError("a frame points the wrong way");
            break;
        }
    return seconds;
}

void TangentFrames(benchmark::State &state)
{
    std::vector<GRID_CORNER> const corners = make_grid(GRID_KIND::HILLS);
    std::string const glb = glb_of(corners);
    std::vector<double> theirs, on_corners, merged, copy;
    for (auto _ : state) {
        theirs.push_back(frames_theirs(glb, state));
        std::unique_ptr<VEX2> const scene = scene_of(corners);
        on_corners.push_back(frames_ours(*scene, state));
        std::unique_ptr<VEX2> const prepared = scene_of(corners);
        remove_duplicates(*prepared, prepare_duplicate_options);
        merged.push_back(frames_ours(*prepared, state));
        copy.push_back(seconds_of([&] { benchmark::DoNotOptimize(std::vector<GRID_CORNER>(corners).data()); }));
        state.SetIterationTime(merged.back());
    }
    state.counters["ours_ms"] = least(merged) * 1e3;
    state.counters["theirs_ms"] = least(theirs) * 1e3;
    state.counters["on_corners_ms"] = least(on_corners) * 1e3;
    state.counters["copy_ms"] = least(copy) * 1e3;
    state.counters["to_theirs"] = least(merged) / least(theirs);
    state.counters["on_corners_to_theirs"] = least(on_corners) / least(theirs);
    state.counters["to_copy"] = least(merged) / least(copy);
}

}  // namespace

BENCHMARK(TangentFrames)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
